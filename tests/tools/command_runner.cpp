#include "tests/tools/command_runner.h"

#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
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
    std::string line = "$K";
    for (const std::string& argument : arguments) {
        line += " " + Quoted(argument);
    }
    return RunShell(line, ".");
}

CommandResult RunShell(const std::string& line, const std::string& folder) {
    const ScratchFolder results;
    const std::string whole = "K=" + Quoted(KESTVOX_COMMAND) + "; cd " + Quoted(folder) + " && { " + line +
                              "\n} >" + Quoted(results.Path("out")) + " 2>" + Quoted(results.Path("err"));
    const int result = std::system(whole.c_str());
    return {.Status = WIFEXITED(result) ? WEXITSTATUS(result) : -1,
            .Output = ReadFile(results.Path("out")),
            .Errors = ReadFile(results.Path("err"))};
}

RunningCommand::RunningCommand(const std::vector<std::string>& arguments) : process_(fork()) {
    if (process_ == 0) {
        std::vector<char*> words = {const_cast<char*>(KESTVOX_COMMAND)};
        for (const std::string& argument : arguments) {
            words.push_back(const_cast<char*>(argument.c_str()));
        }
        words.push_back(nullptr);
        if (!std::freopen("/dev/null", "w", stdout)) {
            _exit(127);
        }
        execv(KESTVOX_COMMAND, words.data());
        _exit(127);
    }
}

void RunningCommand::Send(int signal) const {
    if (process_ > 0) {
        kill(process_, signal);
    }
}

int RunningCommand::Wait() const {
    int status = 0;
    waitpid(process_, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}
