// The multimedia timer and Sleep.
#include <windows.h>
#include <mmsystem.h>

#include <sched.h>

#include <atomic>
#include <chrono>
#include <thread>

#include "platform/time_source.h"

namespace platform {

namespace {

class SystemTime : public TimeSource {
public:
    DWORD Milliseconds() override {
        const auto sinceBoot = std::chrono::steady_clock::now().time_since_epoch();
        return static_cast<DWORD>(std::chrono::duration_cast<std::chrono::milliseconds>(sinceBoot).count());
    }

    void Sleep(DWORD milliseconds) override {
        if (milliseconds == 0) {
            sched_yield();
            return;
        }
        do {
            std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
        } while (milliseconds == INFINITE);
    }
};

SystemTime systemTime;
std::atomic<TimeSource*> timeSource{&systemTime};

}  // namespace

void InstallTimeSource(TimeSource* source) {
    timeSource = source != nullptr ? source : &systemTime;
}

}  // namespace platform

using namespace platform;

void WINAPI Sleep(DWORD dwMilliseconds) {
    timeSource.load()->Sleep(dwMilliseconds);
}

DWORD WINAPI timeGetTime() {
    return timeSource.load()->Milliseconds();
}
