// In front of the simulated cards: something else happens in the middle of a request of the driver's. What
// opens a card through it goes before it does.
#pragma once

#include <functional>
#include <string_view>
#include <utility>

#include "platform/device.h"
#include "simulator/simulator.h"

class RequestGate : public device::Driver {
public:
    RequestGate() : cards_(platform::InstallDeviceDriver(this)) {}
    ~RequestGate() { platform::InstallDeviceDriver(cards_); }
    RequestGate(const RequestGate&) = delete;
    RequestGate& operator=(const RequestGate&) = delete;

    // Before the next request of that name reaches its card, `action` runs on the thread that makes it.
    // Requests of the action's own pass.
    void Before(std::string_view request, std::function<void()> action) {
        code_ = *simulator::RequestCode(request);
        before_ = std::move(action);
    }
    // Whether it has run.
    bool Passed() const { return !before_; }

    // From now on every request of that name, once it has been answered, has its output changed.
    void Answer(std::string_view request, std::function<void(void* output)> change) {
        changedCode_ = *simulator::RequestCode(request);
        change_ = std::move(change);
    }

    // `look` runs on the thread of every request, before it reaches its card.
    void OnEach(std::function<void()> look) { look_ = std::move(look); }

    DWORD Open(const WCHAR* path, void** file) override { return cards_->Open(path, file); }
    void Close(void* file) override { cards_->Close(file); }
    DWORD Control(void* file, device::Request& request) override {
        if (look_) {
            look_();
        }
        if (before_ && request.Code == code_) {
            std::exchange(before_, nullptr)();
        }
        const DWORD result = cards_->Control(file, request);
        if (change_ && request.Code == changedCode_) {
            change_(request.Output);
        }
        return result;
    }

private:
    device::Driver* cards_;
    std::function<void()> look_;
    DWORD code_ = 0;
    std::function<void()> before_;
    DWORD changedCode_ = 0;
    std::function<void(void*)> change_;
};
