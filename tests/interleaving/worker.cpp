#include "tests/interleaving/worker.h"

#include <chrono>

namespace interleaving {
namespace {

using std::chrono::microseconds;

constexpr microseconds BetweenLooks(150);
constexpr unsigned SleepingLooks = 6;  // in a row, after which a thread is taken to wait
constexpr std::chrono::milliseconds LongestLook(30);

}  // namespace

Worker::Worker() : thread_([this] { Run(); }) {}

Worker::~Worker() {
    {
        const std::lock_guard guard(lock_);
        ending_ = true;
        changed_.notify_all();
    }
    thread_.join();
}

void Worker::Run() {
    std::unique_lock guard(lock_);
    id_ = CurrentThreadNumber();
    for (;;) {
        changed_.wait(guard, [this] { return busy_ || ending_; });
        if (ending_) {
            return;
        }
        guard.unlock();
        work_();
        guard.lock();
        busy_ = false;
        changed_.notify_all();
    }
}

void Worker::Begin(std::function<void()> work) {
    const std::lock_guard guard(lock_);
    work_ = std::move(work);
    busy_ = true;
    changed_.notify_all();
}

void Worker::Await() {
    std::unique_lock guard(lock_);
    changed_.wait(guard, [this] { return !busy_; });
}

bool Worker::AwaitDoneOrWaiting() {
    std::unique_lock guard(lock_);
    const auto end = std::chrono::steady_clock::now() + LongestLook;
    ThreadLook last{};
    for (unsigned sleeping = 0; sleeping < SleepingLooks && std::chrono::steady_clock::now() < end;) {
        if (changed_.wait_for(guard, BetweenLooks, [this] { return !busy_; })) {
            return true;
        }
        const ThreadLook look = id_ != 0 ? LookAt(id_) : ThreadLook{};
        sleeping = look.Asleep && look == last ? sleeping + 1 : 0;
        last = look;
    }
    return false;
}

}  // namespace interleaving
