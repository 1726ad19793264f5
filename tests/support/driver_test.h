// A fresh machine with simulated cards for each test, and proof at its end that the driver gave
// everything back: no handle, thread, memory block or held mutex, no open device. Along with it come the
// clients of wave devices, what they ought to hear, and what the system tells.
#pragma once

#include <gtest/gtest.h>

#include <array>
#include <initializer_list>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "simulator/simulator.h"
#include "tests/support/driver_library.h"
#include "tests/support/system.h"
#include "tests/support/text.h"
#include "tests/support/wave_player.h"
#include "tests/support/wave_recorder.h"
#include "tests/support/wave_sound.h"
#include "tools/machine/host.h"

using Lines = std::vector<std::string>;
Lines operator+(Lines first, const Lines& second);

// The driver's own messages to a stream.
inline constexpr UINT SavePci = 0x4000;
inline constexpr UINT RestorePci = 0x4001;
inline constexpr UINT DirectMode = 0x4002;

class DriverTest : public testing::Test {
public:
    static std::u16string ConfigKey(unsigned card = 0) {
        return simulator::Simulator::RegistryPath(card) + u"\\Config";
    }
    // Stored settings of a card, as the driver stores them.
    static void StoreSetting(unsigned card, const WCHAR* name, DWORD value) {
        StoreBinary(card, name, &value, sizeof value);
    }
    static void StoreText(unsigned card, const WCHAR* name, const std::u16string& text);
    static void StoreBinary(unsigned card, const WCHAR* name, const void* data, DWORD size,
                            DWORD type = REG_BINARY) {
        StoreValue(ConfigKey(card), name, data, size, type);
    }
    static void StoreValue(const std::u16string& key, const WCHAR* name, const void* data, DWORD size,
                           DWORD type = REG_BINARY);
    // Codes and gains of the mixer inputs of card 0, and how they are stored.
    struct Monitor {
        DWORD Size;
        std::array<DWORD, 8> Codes;
        std::array<DWORD, 8> Gains;
    };
    static void StoreMonitor(const std::array<DWORD, 8>& codes, const std::array<DWORD, 8>& gains) {
        const Monitor monitor = {sizeof monitor, codes, gains};
        StoreBinary(0, TEXT("Monitor"), &monitor, sizeof monitor);
    }

    // Of an output and of the input of that number; empty when there is none.
    static std::u16string DeviceName(UINT device);

    // Card `follower` takes its clock from card `master` over the link.
    static void Follow(unsigned follower, unsigned master);

protected:
    using Port = simulator::Port;

    static constexpr int64_t Second = 1000000;  // of Simulator::Advance
    static constexpr int64_t Millisecond = 1000;
    static constexpr UINT AnalogOut = 0;  // devices of card 0
    static constexpr UINT DigitalOut = 1;
    static constexpr UINT AnalogIn = 0;
    static constexpr UINT DigitalIn = 1;

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
    Lines TraceText(std::initializer_list<std::string_view> without = {});
    std::array<DWORD, 8> MixerGains();  // of card 0
    // A new client of that output plays what it should.
    void ExpectPlays(UINT device, const WaveFormat& format);

    // Ids of the events in the machine's log, all of which are the driver's warnings.
    static std::vector<DWORD> Events();

private:
    std::string usage_;
    std::unique_ptr<simulator::Simulator> simulator_;
};

// The same test on that many cards.
template <typename Test, unsigned Count>
class WithCards : public Test {
protected:
    WithCards() : Test(Count) {}
};
