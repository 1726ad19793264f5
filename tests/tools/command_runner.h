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

// It ended with that status, and one line on standard error begins with "kestvox: " and says why.
void ExpectOneLine(const CommandResult& result, int status, const std::string& why);

// Each argument is one word, without an apostrophe in it.
CommandResult RunCommand(const std::vector<std::string>& arguments);

// A line of the shell, run in that folder; $K is the command.
CommandResult RunShell(const std::string& line, const std::string& folder);
