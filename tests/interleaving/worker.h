// A thread that a message is sent on: whether it has come back, or waits for somebody.
#pragma once

#include <functional>
#include <future>

namespace interleaving {

class Worker {
public:
    void Begin(std::function<void()> work) { done_ = std::async(std::launch::async, std::move(work)); }
    void Await() const { done_.wait(); }
    // True when the work is done, false when no thread of the process has had anything to do for a while, or
    // one looks again and again for something that does not come. A thread that is judged wrongly goes on all
    // the same: the next step only comes a little early.
    bool AwaitDoneOrWaiting() const;

private:
    std::future<void> done_;
};

}  // namespace interleaving
