// Time, as the cards and the programs that use them see it.
//
// Real: what is due is done by a thread of this process about every millisecond, and by every request.
//
// Stepped: the clock is a number that all processes of the machine share, and whoever moves it on
// does what falls due on the way, instant by instant. After the completions of one instant the mover
// waits until the driver has dealt with them, so that a buffer handed over in answer to another's end
// is handed over at that very time. Three things move it:
//
//   Advance      a test or tool, as far as it likes;
//   a stall      the kernel's wait, by its length;
//   a spin       a thread that reads the timer twice with no request and no sleep in between: to the
//                next millisecond. Without this a wait that watches the timer would never end.
//
// Only one mover at a time waits for the driver; a second one waits for the first, because otherwise it would
// move the clock while the first still waits. A thread that registered a completion routine does neither: a
// completion may be running on it, so that it would wait for itself, or for a mover that waits for it. When
// such a thread spins or stalls, it moves the clock, does what falls due and goes on, and the driver's
// answers come as soon as its threads run. A mover gives up waiting after half a minute of real time.
//
// In another process of the machine the clock has moved by itself: a thread of that process looks
// every millisecond while there is company, and does what fell due meanwhile, late.
#pragma once

#include <atomic>
#include <cstdint>
#include <mutex>
#include <thread>

#include "simulator/machine/host.h"
#include "simulator/machine/process_side.h"

namespace simulator {

// The machine's lock must not be held by the caller of anything here.
class Timeline final : public host::Timer {
public:
    // The machine is set up, and `side` outlives this.
    explicit Timeline(ProcessSide& side);
    ~Timeline();
    Timeline(const Timeline&) = delete;
    Timeline& operator=(const Timeline&) = delete;

    // Stepped: moves the clock on, by `length` nanoseconds or to the first instant at which a buffer
    // ends; true in the latter case. Real: nothing, false.
    bool Advance(int64_t length, bool toBufferEnd);

    // Returns when `length` nanoseconds have passed.
    void Stall(int64_t length);

    // A request has been made on the calling thread: it does not spin.
    static void NoteRequest();

    DWORD Milliseconds() override;
    void Sleep(DWORD milliseconds) override;

private:
    void AwaitDriver();
    bool MoveTo(int64_t target, bool toBufferEnd);
    void Run();

    ProcessSide& side_;
    const bool stepped_;
    host::Lock turn_;  // of the mover that waits for the driver; before the machine's lock
    std::atomic<unsigned> stuckBehind_ = 0;  // the hold behind which a thread was found stuck
    std::atomic<bool> ending_ = false;
    std::thread thread_;
};

}  // namespace simulator
