#include "tests/interleaving/deadline.h"

#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#include <sanitizer/common_interface_defs.h>
#endif

namespace interleaving {
namespace {

#if defined(__SANITIZE_THREAD__) || defined(__SANITIZE_ADDRESS__) || defined(_WIN32)
constexpr std::chrono::seconds LongestInterleaving(30);
#else
constexpr std::chrono::seconds LongestInterleaving(10);
#endif

// For when the program crashes: what was going on.
char goingOn[256];

void PrintGoingOn() {
    std::fprintf(stderr, "THE END, in KESTVOX_INTERLEAVING=\"%s\"\n", goingOn);
}

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
void TellAtTheEnd() {
    __sanitizer_set_death_callback(PrintGoingOn);
}
#else
void OnSignal(int number) {
    PrintGoingOn();
    std::signal(number, SIG_DFL);
    std::raise(number);
}

void TellAtTheEnd() {
    std::signal(SIGSEGV, OnSignal);
    std::signal(SIGABRT, OnSignal);
}
#endif

[[noreturn]] void GiveUp(const std::string& recipe, const char* step) {
    std::printf("A HANG, while %s. To see it again:\n  KESTVOX_INTERLEAVING=\"%s\"\n", step, recipe.c_str());
    std::fflush(stdout);
    std::_Exit(3);
}

}  // namespace

Deadline::Deadline() : thread_([this] { Run(); }) {
    TellAtTheEnd();
}

Deadline::~Deadline() {
    {
        const std::lock_guard guard(lock_);
        ending_ = true;
        changed_.notify_all();
    }
    thread_.join();
}

void Deadline::Begin(const std::string& recipe) {
    const std::lock_guard guard(lock_);
    recipe_ = recipe;
    std::strncpy(goingOn, recipe.c_str(), sizeof goingOn - 1);
    ++round_;
    changed_.notify_all();
}

void Deadline::Reach(const char* step) {
    const std::lock_guard guard(lock_);
    step_ = step;
}

void Deadline::End() {
    const std::lock_guard guard(lock_);
    ++round_;
}

void Deadline::Run() {
    std::unique_lock guard(lock_);
    while (!ending_) {
        changed_.wait(guard, [this] { return ending_ || round_ % 2 != 0; });
        const unsigned round = round_;
        const bool over =
            !changed_.wait_for(guard, LongestInterleaving, [&] { return ending_ || round_ != round; });
        if (over) {
            GiveUp(recipe_, step_);
        }
    }
}

}  // namespace interleaving
