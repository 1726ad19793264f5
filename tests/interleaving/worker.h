// A thread that a message is sent on: whether it has come back, or waits for somebody.
#pragma once

#include <windows.h>

#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>

namespace interleaving {

class Worker {
public:
    Worker();
    ~Worker();  // nothing is under way
    Worker(const Worker&) = delete;
    Worker& operator=(const Worker&) = delete;

    void Begin(std::function<void()> work);
    void Await();
    // True when the work is done, false when its thread sleeps and does not look like waking up by itself, or
    // looks again and again for something that does not come. A thread that is judged wrongly goes on all the
    // same: the next step only comes a little early.
    bool AwaitDoneOrWaiting();

private:
    void Run();

    std::mutex lock_;
    std::condition_variable changed_;
    std::function<void()> work_;
    bool busy_ = false;
    bool ending_ = false;
    unsigned long id_ = 0;  // the system's, 0 until it runs
    std::thread thread_;
};

// What the system tells of a thread of this process.
struct ThreadLook {
    bool Asleep;
    unsigned long Wakings;  // changes whenever it has run
    bool operator==(const ThreadLook&) const = default;
};
ThreadLook LookAt(unsigned long id);
unsigned long CurrentThreadNumber();

}  // namespace interleaving
