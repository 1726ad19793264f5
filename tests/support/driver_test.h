// A fresh machine with simulated cards for each test, and proof at its end that the driver gave
// everything back: no handle, thread, memory block or held mutex, no open device.
#pragma once

#include <windows.h>
#include <mmsystem.h>

#include <gtest/gtest.h>

#include <initializer_list>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "simulator/simulator.h"
#include "tests/support/driver_library.h"
#include "tools/machine/host.h"

class DriverTest : public testing::Test {
public:
    // Stored settings of a card, as the driver stores them.
    static void StoreSetting(unsigned card, const WCHAR* name, DWORD value) {
        StoreBinary(card, name, &value, sizeof value);
    }
    static void StoreText(unsigned card, const WCHAR* name, const std::u16string& text);
    static void StoreBinary(unsigned card, const WCHAR* name, const void* data, DWORD size,
                            DWORD type = REG_BINARY);

    // Card `follower` takes its clock from card `master` over the link.
    static void Follow(unsigned follower, unsigned master);

protected:
    static constexpr int64_t Second = 1000000;  // of Simulator::Advance
    static constexpr int64_t Millisecond = 1000;

    // The cards are on the machine from the start; the first wave call loads the driver, so settings can
    // be stored before it.
    explicit DriverTest(unsigned cards = 1);
    // A test's own clients, libraries and sheets are gone by now: they are members of its class, or its
    // locals.
    ~DriverTest() override;

    simulator::Simulator& Cards() { return *simulator_; }

    // As the last program of the machine does; the next wave call loads the driver again.
    static void UnloadDriver() { kestvox::UnloadWaveDriver(); }

    // What the system tells the driver of a sleep of the computer (PWR_...).
    static void SendPower(LPARAM event) { EXPECT_EQ(DriverLibrary().DriverProc(DRV_POWER, event), 1); }
    void FallAsleep() {
        SendPower(PWR_SUSPENDREQUEST);
        LosePower();
    }
    static void WakeUp() { SendPower(PWR_SUSPENDRESUME); }
    void LosePower();  // as all cards do in between

    // "NAME:N[:fail|pending|short]" and so on, as the simulator reads them.
    void AddFault(std::string_view fault) { Cards().AddFault(simulator::ParseFault(fault).value()); }
    // The `nth` coming request of that code fails, or every one (0).
    void Fail(uint32_t code, unsigned nth = 1, simulator::Fault::Kind kind = simulator::Fault::Kind::Fail) {
        Cards().AddFault({.What = kind, .Code = code, .Nth = nth});
    }
    void Fail(std::string_view request, unsigned nth = 1,
              simulator::Fault::Kind kind = simulator::Fault::Kind::Fail) {
        Fail(simulator::RequestCode(request).value(), nth, kind);
    }

    // The requests made since the trace was last cleared, one readable line each, without those that
    // start with one of the given words.
    std::vector<std::string> TraceText(std::initializer_list<std::string_view> without = {});

private:
    std::string usage_;
    std::unique_ptr<simulator::Simulator> simulator_;
};
