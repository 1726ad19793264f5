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

    MMRESULT Send(UINT message, DWORD_PTR first = 0, DWORD_PTR second = 0) {
        return waveOutMessage(player_.Handle(), message, first, second);
    }
    void ExpectEachReturnedOnce() { player_.ExpectEachReturnedOnce(); }

    WavePlayer player_;
};
