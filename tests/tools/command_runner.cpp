#include "tests/tools/command_runner.h"

#include <gtest/gtest.h>

#include <sys/wait.h>

#include <algorithm>
#include <cstdlib>
#include <sstream>

#include "tests/tools/scratch_folder.h"

std::vector<std::string> CommandResult::Values(const std::string& key) const {
    std::vector<std::string> values;
    std::istringstream lines(Output);
    for (std::string line; std::getline(lines, line);) {
        if (line.starts_with(key + ": ")) {
            values.push_back(line.substr(key.size() + 2));
        }
    }
    return values;
}

void ExpectOneLine(const CommandResult& result, int status, const std::string& why) {
    EXPECT_EQ(result.Status, status);
    EXPECT_TRUE(result.Errors.starts_with("kestvox: ")) << result.Errors;
    EXPECT_NE(result.Errors.find(why), std::string::npos) << result.Errors;
    EXPECT_EQ(std::ranges::count(result.Errors, '\n'), 1) << result.Errors;
}

CommandResult RunCommand(const std::vector<std::string>& arguments) {
    std::string line = "$K";
    for (const std::string& argument : arguments) {
        line += " '" + argument + "'";
    }
    return RunShell(line, ".");
}

CommandResult RunShell(const std::string& line, const std::string& folder) {
    const ScratchFolder results;
    const std::string whole = "K=" KESTVOX_COMMAND "; cd " + folder + " && { " + line + "\n} >" +
                              results.Path("out") + " 2>" + results.Path("err");
    const int result = std::system(whole.c_str());
    return {.Status = WIFEXITED(result) ? WEXITSTATUS(result) : -1,
            .Output = ReadFile(results.Path("out")),
            .Errors = ReadFile(results.Path("err"))};
}
