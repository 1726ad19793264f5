// Clock runs as lists of lines: what a card was asked, in order, and the time that passed in between.
//
// "0 write card 17 = 01 / 01" is a request that card 0 got; "stall 227" a wait in the kernel that took
// exactly that long; "25 ticks" a wait on the millisecond timer that ended on the 25th tick after its
// beginning. Time that passes in any other way gives a line that no list expects.
#pragma once

#include <span>
#include <string>
#include <vector>

#include "simulator/trace/trace.h"
#include "tests/support/driver_test.h"

Lines LinesOf(const std::string& card, Lines requests);  // each behind the card, as in "0 "

Lines TimedLines(std::span<const simulator::TraceEntry> entries);

// What initialised the card at the discovery, through its last handle there.
Lines InitialisationIn(const Lines& discovery, unsigned card);

// A wait of so many microseconds: below 1000 in the kernel; else whole milliseconds, rounded up, and on
// to the next tick of the timer.
std::string Wait(unsigned microseconds);
// Two waits on the timer without a request in between; the second one's first look at the timer moves
// the stepped clock by one more tick.
std::string Wait(unsigned first, unsigned second);

// The pulses that resynchronise a card.
Lines ResyncPulse();
// A byte of the digital output's channel status, as the card holds it afterwards.
Lines StatusByte(unsigned index, unsigned byte);
// Those of the rate, in professional format.
Lines StatusRate(unsigned byte0, unsigned byte4);

class ClockTest : public DriverTest {
protected:
    using DriverTest::DriverTest;

    // Loads the driver, so that the cards are initialised before a run.
    void Load();

    // Opens the device; the lines of the clock run on the way, without the claim of the channel before it
    // and what an open does after it.
    Lines Run(WavePlayer& player, UINT device, DWORD rate, MMRESULT result = MMSYSERR_NOERROR);
    // ... and closes it again.
    Lines Run(UINT device, DWORD rate, MMRESULT result = MMSYSERR_NOERROR) {
        WavePlayer player;
        return Run(player, device, rate, result);
    }

    static constexpr unsigned Internal = 0;  // of Source
    static constexpr unsigned Link = 0x20;
    static constexpr unsigned Digital = 0x40;
    static constexpr unsigned Pll = 0x60;

    bool Held(unsigned card) { return (Cards().CardRegister(card, 17) & 0x01) != 0; }
    unsigned Source(unsigned card) { return Cards().CardRegister(card, 32) & 0x60; }
};

// Card 1 follows card 0, card 3 follows card 2.
class TwoGroupsTest : public ClockTest {
protected:
    TwoGroupsTest() : ClockTest(4) {
        Follow(1, 0);
        Follow(3, 2);
    }
};
