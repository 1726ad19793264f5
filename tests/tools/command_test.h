// Runs the built command as a user would and takes in what it says.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
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

std::string ReadFile(const std::string& path);

// A test with a folder of its own for its files.
class CommandTest : public testing::Test {
protected:
    CommandTest();
    ~CommandTest() override;

    // A line of the shell, run in the folder; $K is the command.
    CommandResult Shell(const std::string& line) const;

    std::string Path(const std::string& name) const { return (folder_ / "files" / name).string(); }
    std::string Read(const std::string& name) const { return ReadFile(Path(name)); }
    void Write(const std::string& name, const std::string& bytes) const;

private:
    std::filesystem::path folder_;  // with what the shell said, beside the files
};
