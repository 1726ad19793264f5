#include "tests/interleaving/worker.h"

#include <chrono>

#ifndef _WIN32
#include <pthread.h>
#include <time.h>
#endif

namespace interleaving {
namespace {

constexpr std::chrono::microseconds BetweenLooks(150);
constexpr unsigned SleepingLooks = 6;  // in a row, after which a thread is taken to wait
constexpr unsigned MostLooks = 200;

}  // namespace

Worker::~Worker() {
    Begin(nullptr);
    thread_.join();
}

void Worker::Run() {
    std::unique_lock guard(lock_);
    for (;;) {
        changed_.wait(guard, [this] { return busy_; });
        if (!work_) {
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
    unsigned sleeping = 0;
    int64_t before = TimeSpent();
    for (unsigned look = 0; look < MostLooks && sleeping < SleepingLooks; ++look) {
        if (changed_.wait_for(guard, BetweenLooks, [this] { return !busy_; })) {
            return true;
        }
        const int64_t spent = TimeSpent();
        sleeping = spent == before ? sleeping + 1 : 0;
        before = spent;
    }
    return false;
}

int64_t Worker::TimeSpent() {
#ifdef _WIN32
    return -1;
#else
    clockid_t clock{};
    timespec spent{};
    pthread_getcpuclockid(thread_.native_handle(), &clock);
    clock_gettime(clock, &spent);
    return spent.tv_sec * 1000000000 + spent.tv_nsec;
#endif
}

}  // namespace interleaving
