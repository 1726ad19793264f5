// A second program on the machine, in step with the test.
#pragma once

#include <windows.h>
#include <mmsystem.h>

#include <cstdint>
#include <memory>
#include <string>

#include "simulator/simulator.h"

inline constexpr int64_t NoError = MMSYSERR_NOERROR;  // as it is told

// A fresh machine for several programs: the test is on it, and every companion made meanwhile.
class SharedMachine {
public:
    SharedMachine();
    ~SharedMachine();
    SharedMachine(const SharedMachine&) = delete;
    SharedMachine& operator=(const SharedMachine&) = delete;

    // Another one in its place. The test has no program on it, and no companion is left.
    void Renew();

    const std::string& Name() const { return name_; }

private:
    void Remove() const;

    const std::string name_;
};

// What a program of the machine has: its view of the cards, and the driver until it ends. Without a
// number of cards it joins those that are there.
class Program {
public:
    explicit Program(unsigned cards = 0);
    ~Program();

    simulator::Simulator Cards;
};

// Runs a script in a process of its own, from the constructor on, which ends with the test's. Both sides pass
// numbers: what one tells, the other hears, in order. Make it before the test has a Program or any other
// thread.
class Companion {
public:
    // Sees nothing of the test but what it hears: on Windows the process is this program started anew.
    using Script = void (*)(Companion& test);

    explicit Companion(Script script);
    // The companion has come to the end of its script, or a failure is noted.
    ~Companion();

    void Tell(int64_t number);
    int64_t Hear();  // Gone when there is nobody to tell anything any more
    int64_t Ask(int64_t number = 0) {
        Tell(number);
        return Hear();
    }
    void Kill();  // as the system does it: nothing is closed, nothing unloaded

    static constexpr int64_t Gone = -1;

private:
    struct Process;  // the other one, and the way to it
    friend struct StartedAnew;
    explicit Companion(std::unique_ptr<Process> test);

    std::unique_ptr<Process> process_;
};
