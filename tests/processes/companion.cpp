#include "tests/processes/companion.h"

#include <gtest/gtest.h>

#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>

#include "tests/support/system.h"

namespace {

constexpr unsigned LongestScript = 60;  // seconds; one that hangs must not hang the test with it

}  // namespace

Program::Program(unsigned cards) : Cards({.Cards = cards, .Time = simulator::TimeKind::Stepped}) {}

Program::~Program() {
    test_system::UnloadWaveDriver();
}

Companion::Companion(const std::function<void(Companion& test)>& script) {
    int ends[2] = {-1, -1};
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0) {
        ADD_FAILURE() << "no connection";
        return;
    }
    process_ = fork();
    const bool isCompanion = process_ == 0;
    connection_ = ends[isCompanion ? 1 : 0];
    close(ends[isCompanion ? 0 : 1]);
    if (isCompanion) {
        alarm(LongestScript);
        script(*this);
        _exit(testing::Test::HasFailure() ? 1 : 0);
    }
}

Companion::~Companion() {
    if (process_ > 0) {
        shutdown(connection_, SHUT_WR);  // it hears nothing more, so it comes to its end
        int status = 0;
        waitpid(process_, &status, 0);
        EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << "the companion ended with " << status;
    }
    close(connection_);
}

void Companion::Tell(int64_t number) {
    EXPECT_EQ(send(connection_, &number, sizeof number, MSG_NOSIGNAL), static_cast<ssize_t>(sizeof number));
}

int64_t Companion::Hear() {
    int64_t number = 0;
    const ssize_t length = recv(connection_, &number, sizeof number, MSG_WAITALL);
    return length == static_cast<ssize_t>(sizeof number) ? number : Gone;
}

void Companion::Kill() {
    kill(process_, SIGKILL);
    waitpid(process_, nullptr, 0);
    process_ = 0;
}
