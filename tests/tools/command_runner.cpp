#include "tests/tools/command_runner.h"

#include <sys/wait.h>

#include <cstdlib>
#include <sstream>

#include "tests/tools/scratch_folder.h"

namespace {

std::string Quoted(const std::string& word) {
    std::string quoted = "'";
    for (const char c : word) {
        quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
    }
    return quoted + "'";
}

}  // namespace

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

CommandResult RunCommand(const std::vector<std::string>& arguments) {
    const ScratchFolder folder;
    std::string line = Quoted(KESTVOX_COMMAND);
    for (const std::string& argument : arguments) {
        line += " " + Quoted(argument);
    }
    line += " >" + Quoted(folder.Path("out")) + " 2>" + Quoted(folder.Path("err"));
    const int result = std::system(line.c_str());
    return {.Status = WIFEXITED(result) ? WEXITSTATUS(result) : -1,
            .Output = ReadFile(folder.Path("out")),
            .Errors = ReadFile(folder.Path("err"))};
}
