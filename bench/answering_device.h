// A kernel driver without cards behind it: every request is answered at once, a queued buffer is done as soon
// as it is queued. What is measured with it is the driver and the platform layer alone.
#pragma once

#include <atomic>
#include <cstdint>

#include "platform/device.h"

class AnsweringDevice : public platform::DeviceDriver {
public:
    explicit AnsweringDevice(unsigned cards) : cards_(cards) { platform::InstallDeviceDriver(this); }
    ~AnsweringDevice() { platform::InstallDeviceDriver(nullptr); }
    AnsweringDevice(const AnsweringDevice&) = delete;
    AnsweringDevice& operator=(const AnsweringDevice&) = delete;

    uint64_t Requests() const { return requests_; }

    DWORD Open(const WCHAR* path, void** file) override;
    void Close(void* file) override;
    DWORD Control(void* file, platform::DeviceRequest& request) override;

private:
    unsigned cards_;
    std::atomic<uint64_t> requests_ = 0;
};
