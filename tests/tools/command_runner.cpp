#include "tests/tools/command_runner.h"

#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
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

CommandResult RunCommand(const std::vector<std::string>& arguments) {
    const ScratchFolder folder;
    const std::string out = folder.Path("out");
    const std::string err = folder.Path("err");
    std::vector<const char*> words = {KESTVOX_COMMAND};
    for (const std::string& argument : arguments) {
        words.push_back(argument.c_str());
    }
    words.push_back(nullptr);
    const pid_t id = fork();
    if (id == 0) {
        prctl(PR_SET_PDEATHSIG, SIGKILL);  // however the test ends
        if (std::freopen(out.c_str(), "w", stdout) != nullptr &&
            std::freopen(err.c_str(), "w", stderr) != nullptr) {
            execv(words[0], const_cast<char**>(words.data()));
        }
        _exit(127);
    }
    int result = 0;
    waitpid(id, &result, 0);
    return {.Status = WIFEXITED(result) ? WEXITSTATUS(result) : -1,
            .Output = ReadFile(out),
            .Errors = ReadFile(err)};
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

RunningCommand::RunningCommand(const std::vector<std::string>& arguments) : process_(fork()) {
    if (process_ == 0) {
        prctl(PR_SET_PDEATHSIG, SIGKILL);
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
