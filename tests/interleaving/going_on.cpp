#include "tests/interleaving/going_on.h"

#include <atomic>
#include <csignal>
#include <cstdio>
#include <cstring>

#ifndef _WIN32
#include <sys/time.h>
#endif
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#include <sanitizer/common_interface_defs.h>
#endif

namespace interleaving {
namespace {

// Seconds in which the process was there to see them end; a slow one takes less than one. Time that it is
// stopped, or does not get a processor, is nobody's fault.
constexpr unsigned LongestInterleaving = 120;

char goingOn[256];
const char* volatile reached = "";
std::atomic<unsigned> secondsLeft = 0;

void Print() {
    std::fprintf(stderr, "THE END, while %s, in KESTVOX_INTERLEAVING=\"%s\"\n", reached, goingOn);
}

[[maybe_unused]] void OnSignal(int number) {
    Print();
    std::signal(number, SIG_DFL);
    std::raise(number);
}

[[maybe_unused]] void OnSecond(int number) {
    if (--secondsLeft == 0) {
        OnSignal(number);
    }
}

void TellAtTheEnd() {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    __sanitizer_set_death_callback(Print);
#else
    std::signal(SIGSEGV, OnSignal);
    std::signal(SIGABRT, OnSignal);
#endif
#ifndef _WIN32
    std::signal(SIGALRM, OnSecond);
#endif
}

// 0: never. Signals that come while the process does not run are one.
void EndAfter(unsigned seconds) {
    secondsLeft = seconds;
#ifndef _WIN32
    const timeval second = {.tv_sec = seconds != 0 ? 1 : 0, .tv_usec = 0};
    const itimerval each = {.it_interval = second, .it_value = second};
    setitimer(ITIMER_REAL, &each, nullptr);
#endif
}

}  // namespace

GoingOn::GoingOn(const std::string& recipe) {
    [[maybe_unused]] static const bool Told = (TellAtTheEnd(), true);
    std::strncpy(goingOn, recipe.c_str(), sizeof goingOn - 1);
    EndAfter(LongestInterleaving);
}

GoingOn::~GoingOn() {
    EndAfter(0);
    goingOn[0] = '\0';
}

void GoingOn::Reach(const char* step) {
    reached = step;
}

}  // namespace interleaving
