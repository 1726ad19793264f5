// One client of one output on a fresh machine.
#pragma once

#include "tests/support/driver_test.h"
#include "tests/support/system.h"
#include "tests/support/wave_player.h"
#include "tests/support/wave_sound.h"

class OutputTest : public DriverTest {
protected:
    static constexpr UINT AnalogOut = 0;  // devices of card 0
    static constexpr UINT DigitalOut = 1;
    static constexpr int64_t Second = 1000000;

    explicit OutputTest(unsigned cards = 1) : DriverTest(cards) {}

    void TearDown() override {
        player_.OnDone(nullptr);  // what it would act on is gone
        player_.Shut();
        DriverTest::TearDown();
    }

    std::vector<simulator::Frame> Played(simulator::Port port = simulator::Port::Analog) {
        return Cards().Played(0, port);
    }
    simulator::OutputStatus Output() { return Cards().Output(0, simulator::Port::Analog); }

    void Fail(uint32_t code, unsigned nth = 1, simulator::Fault::Kind kind = simulator::Fault::Kind::Fail) {
        simulator::Fault fault;
        fault.What = kind;
        fault.Code = code;
        fault.Nth = nth;
        Cards().AddFault(fault);
    }
    void Fail(std::string_view request, unsigned nth = 1,
              simulator::Fault::Kind kind = simulator::Fault::Kind::Fail) {
        Fail(simulator::RequestCode(request).value(), nth, kind);
    }

    MMRESULT Send(UINT message, DWORD_PTR first = 0, DWORD_PTR second = 0) {
        return waveOutMessage(player_.Handle(), message, first, second);
    }

    // Every header of the player has come back exactly once, as a header that comes back looks.
    void ExpectEachReturnedOnce() {
        for (size_t i = 0; i < player_.HeaderCount(); ++i) {
            EXPECT_EQ(player_.DoneCount(i), 1u) << "header " << i;
            const DWORD flags = player_.Header(i).dwFlags;
            EXPECT_EQ(flags & (WHDR_DONE | WHDR_INQUEUE), unsigned{WHDR_DONE}) << "header " << i;
        }
    }

    WavePlayer player_;
};
