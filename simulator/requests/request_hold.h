// Holds one thread at one of its requests, before the kernel driver sees it or after it has answered, so that
// a test can let other threads act in between. No lock of the simulator is held meanwhile.
#pragma once

#include <atomic>
#include <condition_variable>
#include <mutex>

namespace simulator {

class RequestHold {
public:
    enum class Where { Before, After };
    enum class State { Running, Held, Ended };

    // At the n-th request of the watched thread, counted from 1. With 0 it is never held, only counted.
    RequestHold(unsigned nth, Where where) : nth_(nth), where_(where) {}
    RequestHold(const RequestHold&) = delete;
    RequestHold& operator=(const RequestHold&) = delete;

    // Makes the calling thread the watched one as long as this lives; one at a time.
    class Watch {
    public:
        explicit Watch(RequestHold& hold);
        ~Watch();
        Watch(const Watch&) = delete;
        Watch& operator=(const Watch&) = delete;

    private:
        RequestHold& hold_;
        RequestHold* outer_;
    };

    // Returns when the thread is held, or is watched no more.
    State AwaitHeldOrEnded();
    // The thread goes on, and is not held any more.
    void LetGo();
    unsigned Requests();  // of the watched thread so far

    // While a thread of another process is held, and may keep locks that threads of this one wait for.
    class Elsewhere {
    public:
        Elsewhere();
        ~Elsewhere();
        Elsewhere(const Elsewhere&) = delete;
        Elsewhere& operator=(const Elsewhere&) = delete;
    };

    // --- the simulator's side -----------------------------------------------------------------
    // The calling thread is there with a request.
    static void Reach(Where where);
    // Which hold is under way, another number for each; 0: none. A mover of the clock does not wait for
    // threads that a held one may be keeping.
    static unsigned UnderWay();

private:
    void Meet(Where where);

    const unsigned nth_;
    const Where where_;
    std::mutex lock_;
    std::condition_variable changed_;
    State state_ = State::Running;
    bool letGo_ = false;
    unsigned requests_ = 0;
};

}  // namespace simulator
