#include "tests/interleaving/going_on.h"

#include <csignal>
#include <cstdio>
#include <cstring>

#ifndef _WIN32
#include <unistd.h>
#endif
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#include <sanitizer/common_interface_defs.h>
#endif

namespace interleaving {
namespace {

constexpr unsigned LongestInterleaving = 120;  // seconds; a slow one takes less than one

char goingOn[256];
const char* volatile reached = "";

void Print() {
    std::fprintf(stderr, "THE END, while %s, in KESTVOX_INTERLEAVING=\"%s\"\n", reached, goingOn);
}

[[maybe_unused]] void OnSignal(int number) {
    Print();
    std::signal(number, SIG_DFL);
    std::raise(number);
}

void TellAtTheEnd() {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    __sanitizer_set_death_callback(Print);
#else
    std::signal(SIGSEGV, OnSignal);
    std::signal(SIGABRT, OnSignal);
#endif
#ifndef _WIN32
    std::signal(SIGALRM, OnSignal);
#endif
}

void EndAfter([[maybe_unused]] unsigned seconds) {
#ifndef _WIN32
    alarm(seconds);
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
