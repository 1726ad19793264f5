#include "front/windows/sleeper.h"

#include <mmsystem.h>

#include "front/windows/text.h"

namespace front {

namespace {

constexpr DWORD LookMilliseconds = 2;
constexpr DWORD SleepMilliseconds = 100;

}  // namespace

Sleeper::~Sleeper() {
    ends_ = true;
    if (thread_) {
        WaitForSingleObject(thread_, INFINITE);
        CloseHandle(thread_);
    }
}

void Sleeper::Watch(WaveDirection direction, unsigned card, simulator::Port port) {
    if (thread_) {
        return;
    }
    direction_ = direction;
    card_ = card;
    port_ = port;
    DWORD id = 0;
    thread_ = CreateThread(nullptr, 0, &Sleeper::Run, this, 0, &id);
}

DWORD WINAPI Sleeper::Run(LPVOID sleeper) {
    auto& self = *static_cast<Sleeper*>(sleeper);
    const auto due = static_cast<uint64_t>(self.seconds_ * self.cards_.SampleRate(self.card_));
    while (!self.ends_ && self.FramesDone() <= due) {
        Sleep(LookMilliseconds);
    }
    if (!self.ends_) {
        self.SleepAndWake();
    }
    return 0;
}

uint64_t Sleeper::FramesDone() const {
    return direction_ == WaveDirection::Out ? cards_.Output(card_, port_).FramesPlayed
                                            : cards_.Input(card_, port_).FramesRecorded;
}

void Sleeper::SleepAndWake() {
    const HDRVR driver = OpenDriver(TEXT("kestvox.dll"), nullptr, 0);
    if (!driver) {
        return;
    }
    TellDebugger("the computer goes to sleep");
    SendDriverMessage(driver, DRV_POWER, PWR_SUSPENDREQUEST, 0);
    for (unsigned card = 0; card < cards_.CardCount(); ++card) {
        cards_.PowerCycle(card);
    }
    Sleep(SleepMilliseconds);
    SendDriverMessage(driver, DRV_POWER, PWR_SUSPENDRESUME, 0);
    CloseDriver(driver, 0, 0);
}

}  // namespace front
