// A kernel driver without cards behind it: every request is answered at once, a queued buffer is done as soon
// as it is queued. What is measured with it is the driver and the platform layer alone. Its time passes by
// being looked at, so that no settling of the clock is waited for.
#pragma once

#include <atomic>
#include <cstdint>

#include "platform/device.h"
#include "platform/time_source.h"

class AnsweringDevice : public device::Driver, public platform::TimeSource {
public:
    explicit AnsweringDevice(unsigned cards);
    ~AnsweringDevice();
    AnsweringDevice(const AnsweringDevice&) = delete;
    AnsweringDevice& operator=(const AnsweringDevice&) = delete;

    uint64_t Requests() const { return requests_; }

    DWORD Open(const WCHAR* path, void** file) override;
    void Close(void* file) override;
    DWORD Control(void* file, device::Request& request) override;

    DWORD Milliseconds() override { return ++milliseconds_; }
    void Sleep(DWORD milliseconds) override;

private:
    unsigned cards_;
    std::atomic<DWORD> milliseconds_ = 0;
    std::atomic<uint64_t> requests_ = 0;
};
