// A second program on the machine, in step with the test.
#pragma once

#include <windows.h>
#include <mmsystem.h>

#include <sys/types.h>

#include <cstdint>
#include <functional>

#include "simulator/simulator.h"

// What a program of the machine has: its view of the cards, and the driver until it ends. Without a
// number of cards it joins those that are there.
class Program {
public:
    explicit Program(unsigned cards = 0);
    ~Program();
    Program(const Program&) = delete;
    Program& operator=(const Program&) = delete;

    simulator::Simulator Cards;
};

// Runs `script` in a process of its own, from the constructor on. Both sides pass numbers: what one
// tells, the other hears, in order. Make it before the process has a Program or any other thread.
class Companion {
public:
    explicit Companion(const std::function<void(Companion& test)>& script);
    // The companion has come to the end of its script, or a failure is noted.
    ~Companion();
    Companion(const Companion&) = delete;
    Companion& operator=(const Companion&) = delete;

    void Tell(int64_t number);
    int64_t Hear();  // Gone when there is nobody to tell anything any more
    void Kill();     // as the system does it: nothing is closed, nothing unloaded

    static constexpr int64_t Gone = -1;

private:
    int connection_ = -1;
    pid_t process_ = 0;  // 0 in the companion itself, and when it has been killed
};
