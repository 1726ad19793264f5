#include "card/rate_measurement.h"

#include "card/delay.h"
#include "card/registers.h"

namespace kestvox {

namespace {

constexpr DWORD MeasurePeriods = 192;  // one block of channel status

// A reading: bits 0-2 all set when there is no valid measurement, bits 3-5 the rate class.
constexpr DWORD NoMeasurement = 0x07;
constexpr DWORD RateClassMask = 0x38;
constexpr DWORD FirstRateClass = 0x18;  // 96000 Hz; each slower rate code adds one class
constexpr DWORD RateClassStep = 0x08;
constexpr WORD LastMeasurableRateCode = 4;  // 32000 Hz

BOOL Measure(CardHandle* handle, const RateMeter& meter, DWORD rate, DWORD* reading) {
    WriteCardRegister(handle, meter.Control, meter.Space, MeasureRate, MeasureRate);
    DelayMicroseconds(handle, PeriodsToMicroseconds(1, rate));
    WriteCardRegister(handle, meter.Control, meter.Space, 0, MeasureRate);
    DelayMicroseconds(handle, PeriodsToMicroseconds(MeasurePeriods, rate));
    return ReadCardRegister(handle, meter.Reading, meter.Space, reading);
}

bool ReadingMatches(DWORD reading, WORD rateCode) {
    if ((reading & NoMeasurement) == NoMeasurement) {
        return false;
    }
    return rateCode > LastMeasurableRateCode ||
           (reading & RateClassMask) == FirstRateClass + rateCode * RateClassStep;
}

}  // namespace

bool MeasuredRateMatches(CardHandle* handle, const RateMeter& meter, DWORD rate, WORD rateCode) {
    DWORD reading = 0;
    Measure(handle, meter, rate, &reading);
    return !Measure(handle, meter, rate, &reading) || ReadingMatches(reading, rateCode);
}

}  // namespace kestvox
