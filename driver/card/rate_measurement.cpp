#include "card/rate_measurement.h"

#include "card/registers.h"

namespace kestvox {

namespace {

constexpr DWORD MeasurePeriods = 192;  // one block of channel status

BOOL Measure(CardHandle* handle, const RateMeter& meter, const CardRate& rate, DWORD* reading) {
    WriteCardRegister(handle, meter.Control, meter.Space, MeasureRate, MeasureRate);
    DelayMicroseconds(handle, PeriodsToMicroseconds(1, rate.Hz));
    WriteCardRegister(handle, meter.Control, meter.Space, 0, MeasureRate);
    DelayMicroseconds(handle, PeriodsToMicroseconds(MeasurePeriods, rate.Hz));
    return ReadCardRegister(handle, meter.Reading, meter.Space, reading);
}

bool ReadingMatches(DWORD reading, const CardRate& rate) {
    if ((reading & NoMeasurement) == NoMeasurement) {
        return false;
    }
    return rate.MeasuredClass == NotMeasurable ||
           (reading & RateClassMask) >> RateClassShift == rate.MeasuredClass;
}

}  // namespace

bool MeasuredRateMatches(CardHandle* handle, const RateMeter& meter, const CardRate& rate) {
    DWORD reading = 0;
    Measure(handle, meter, rate, &reading);
    return !Measure(handle, meter, rate, &reading) || ReadingMatches(reading, rate);
}

}  // namespace kestvox
