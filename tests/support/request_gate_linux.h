// In front of the simulated cards: something else happens in the middle of a request of the driver's. What
// opens a card through it goes before it does.
#pragma once

#include <functional>

#include "platform/device.h"

class RequestGate : public device::Driver {
public:
    RequestGate() : cards_(platform::InstallDeviceDriver(this)) {}
    ~RequestGate() { platform::InstallDeviceDriver(cards_); }
    RequestGate(const RequestGate&) = delete;
    RequestGate& operator=(const RequestGate&) = delete;

    // What is done on the thread of every request: before it reaches its card, and when it has been answered.
    std::function<void(DWORD code)> Before;
    std::function<void(DWORD code, void* output)> After;

    DWORD Open(const WCHAR* path, void** file) override { return cards_->Open(path, file); }
    void Close(void* file) override { cards_->Close(file); }
    DWORD Control(void* file, device::Request& request) override {
        if (Before) {
            Before(request.Code);
        }
        const DWORD result = cards_->Control(file, request);
        if (After) {
            After(request.Code, request.Output);
        }
        return result;
    }

private:
    device::Driver* cards_;
};
