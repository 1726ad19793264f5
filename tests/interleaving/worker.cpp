#include "tests/interleaving/worker.h"

#include <chrono>

#ifndef _WIN32
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <string>
#endif

namespace interleaving {
namespace {

constexpr std::chrono::microseconds BetweenLooks(150);
constexpr unsigned QuietLooks = 6;  // in a row, after which a thread is taken to wait
constexpr unsigned MostLooks = 400;

// Whether another thread runs, or would if it had a processor. Windows does not say.
bool AnyoneRuns() {
#ifndef _WIN32
    const std::string self = std::to_string(gettid());
    std::error_code ended;
    for (const auto& thread : std::filesystem::directory_iterator("/proc/self/task", ended)) {
        std::string line;
        std::getline(std::ifstream(thread.path() / "stat"), line);
        const size_t name = line.rfind(')');
        if (thread.path().filename() != self && name != std::string::npos && line[name + 2] == 'R') {
            return true;
        }
    }
#endif
    return false;
}

}  // namespace

bool Worker::AwaitDoneOrWaiting() const {
    unsigned quiet = 0;
    for (unsigned look = 0; look < MostLooks && quiet < QuietLooks; ++look) {
        if (done_.wait_for(BetweenLooks) == std::future_status::ready) {
            return true;
        }
        quiet = AnyoneRuns() ? 0 : quiet + 1;
    }
    return false;
}

}  // namespace interleaving
