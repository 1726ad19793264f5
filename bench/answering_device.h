// A kernel driver without cards behind it: every request is answered at once. A queued buffer is done as soon
// as it is queued, or, once told to hold buffers, when it is asked for. What is measured with it is the
// driver and the platform layer alone. Its time passes by being looked at, so that no settling of the clock
// is waited for.
#pragma once

#include <atomic>
#include <cstdint>
#include <deque>
#include <mutex>

#include "platform/device.h"
#include "platform/time_source.h"

class AnsweringDevice : public device::Driver, public platform::TimeSource {
public:
    explicit AnsweringDevice(unsigned cards);
    ~AnsweringDevice();
    AnsweringDevice(const AnsweringDevice&) = delete;
    AnsweringDevice& operator=(const AnsweringDevice&) = delete;

    uint64_t Requests() const { return requests_; }

    // From now on queued buffers wait for CompleteNext or for a flush, of whichever channel.
    void HoldBuffers() { holds_ = true; }
    // The buffer that has waited longest is done, if any waits.
    void CompleteNext();

    DWORD Open(const WCHAR* path, void** file) override;
    void Close(void* file) override;
    DWORD Control(void* file, device::Request& request) override;

    DWORD Milliseconds() override { return ++milliseconds_; }
    void Sleep(DWORD milliseconds) override;

private:
    struct Completion {
        platform::ThreadReference Thread;
        device::ProcedureCall Routine;
        ULONG_PTR Cookie;
    };

    static void Complete(const Completion& done);

    unsigned cards_;
    std::atomic<bool> holds_ = false;
    std::mutex lock_;
    std::deque<Completion> held_;  // in their order of queueing
    std::atomic<DWORD> milliseconds_ = 0;
    std::atomic<uint64_t> requests_ = 0;
};
