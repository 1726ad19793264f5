// Runs the built command as a user would and takes in what it says.
#pragma once

#include <string>
#include <vector>

struct CommandResult {
    int Status;
    std::string Output;
    std::string Errors;

    // What stands behind "key: ", once for each such line.
    std::vector<std::string> Values(const std::string& key) const;
};

// Each argument is one word.
CommandResult RunCommand(const std::vector<std::string>& arguments);
