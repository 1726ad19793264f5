// A thread that a message is sent on: whether it has come back, or waits for somebody.
#pragma once

#include <condition_variable>
#include <cstdint>
#include <functional>
#include <mutex>
#include <thread>

namespace interleaving {

class Worker {
public:
    Worker() = default;
    ~Worker() { Await(); }
    Worker(const Worker&) = delete;
    Worker& operator=(const Worker&) = delete;

    void Begin(std::function<void()> work);
    void Await();
    // True when the work is done, false when no thread of the process has had anything to do for a while, or
    // one looks again and again for something that does not come. A thread that is judged wrongly goes on all
    // the same: the next step only comes a little early.
    bool AwaitDoneOrWaiting();

private:
    std::mutex lock_;
    std::condition_variable changed_;
    bool busy_ = false;
    std::thread thread_;
};

}  // namespace interleaving
