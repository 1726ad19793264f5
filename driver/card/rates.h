// The sample rates that a card can run at, and all that depends on the rate alone.
#pragma once

#include <windows.h>

#include <cstddef>
#include <iterator>

namespace kestvox {

inline constexpr BYTE NotMeasurable = 0;

struct CardRate {
    DWORD Hz;
    WORD Code;         // as the card's clock is told the rate; the row's place in the table
    bool DoubleSpeed;  // the converters have to run at double speed
    BYTE
        MeasuredClass;  // what the receiver measures of a signal at this rate; NotMeasurable: it has no class
    // The channel status of the digital output, in either of its formats.
    BYTE ProfessionalByte0;  // bit 0: professional; bits 6-7: the rate, if it is one of the three oldest
    BYTE ProfessionalByte4;  // bits 3-6: the rate, if it is not; 0 when byte 0 has it or none can tell it
    BYTE ConsumerByte3;      // bits 0-3: the rate; 0 also for one that cannot be told
};

inline constexpr CardRate CardRates[] = {
    // Hz, code, double speed, measured class, professional bytes 0 and 4, consumer byte 3
    {96000, 0, true, 3, 0x01, 0x10, 0x00},
    {88200, 1, true, 4, 0x01, 0x50, 0x00},
    {48000, 2, false, 5, 0x81, 0x00, 0x02},
    {44100, 3, false, 6, 0x41, 0x00, 0x00},
    {32000, 4, false, 7, 0xC1, 0x00, 0x03},
    {22050, 5, false, NotMeasurable, 0x01, 0x48, 0x00},
    {8000, 6, false, NotMeasurable, 0x01, 0x00, 0x00},
    {11025, 7, false, NotMeasurable, 0x01, 0x00, 0x00},
};

// Null for a rate that the card cannot run at.
constexpr const CardRate* FindCardRate(DWORD hz) {
    for (const CardRate& rate : CardRates) {
        if (rate.Hz == hz) {
            return &rate;
        }
    }
    return nullptr;
}

// `code` is that of a row.
constexpr const CardRate& CardRateOfCode(WORD code) {
    return CardRates[code];
}

constexpr bool CodesArePlaces() {
    for (size_t place = 0; place < std::size(CardRates); ++place) {
        if (CardRates[place].Code != place) {
            return false;
        }
    }
    return true;
}
static_assert(CodesArePlaces());

}  // namespace kestvox
