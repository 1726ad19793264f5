#include <gtest/gtest.h>

#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <iterator>

#include "platform/machine.h"
#include "tests/processes/companion.h"
#include "tests/support/wait.h"

namespace {

// A thread that says that it is over may still be giving back what it had. Where a fork finds it with a lock
// of the sanitizer's, that stays taken in the new process.
void AwaitOtherThreads() {
#ifndef KESTVOX_SANITIZE_THREAD  // which has a thread of its own, and frees its locks
    const auto count = [] {
        return std::distance(std::filesystem::directory_iterator("/proc/self/task"), {});
    };
    EXPECT_TRUE(ComesTrue([count] { return count() == 1; }))
        << "a companion is made before other threads are";
#endif
}

}  // namespace

void SharedMachine::Remove() const {
    platform::RemoveMachine(name_);
}

struct Companion::Process {
    int Connection;
    pid_t Id;  // 0 in the companion itself, and when it has been killed
};

Companion::Companion(Script script) {
    AwaitOtherThreads();
    int ends[2] = {-1, -1};
    EXPECT_EQ(socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends), 0);
    const pid_t test = getpid();
    const pid_t id = fork();
    const bool isCompanion = id == 0;
    process_ = std::make_unique<Process>(Process{ends[isCompanion ? 1 : 0], id});
    close(ends[isCompanion ? 0 : 1]);
    if (isCompanion) {
        prctl(PR_SET_PDEATHSIG, SIGKILL);  // however the test ends
        if (getppid() == test) {
            script(*this);
        }
        _exit(testing::Test::HasFailure() ? 1 : 0);
    }
}

Companion::~Companion() {
    if (process_->Id > 0) {
        shutdown(process_->Connection, SHUT_WR);  // it hears nothing more, so it comes to its end
        int status = 0;
        waitpid(process_->Id, &status, 0);
        EXPECT_EQ(status, 0) << "how the companion ended";
    }
    close(process_->Connection);
}

void Companion::Tell(int64_t number) {
    EXPECT_EQ(send(process_->Connection, &number, sizeof number, MSG_NOSIGNAL),
              static_cast<ssize_t>(sizeof number));
}

int64_t Companion::Hear() {
    int64_t number = 0;
    const ssize_t length = recv(process_->Connection, &number, sizeof number, MSG_WAITALL);
    return length == static_cast<ssize_t>(sizeof number) ? number : Gone;
}

void Companion::Kill() {
    ASSERT_GT(process_->Id, 0) << "any other number is a group of processes, or all of them";
    kill(process_->Id, SIGKILL);
    waitpid(process_->Id, nullptr, 0);
    process_->Id = 0;
}
