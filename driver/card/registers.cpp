#include "card/registers.h"

#include "card/locks.h"

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

BOOL WriteCard(CardHandle* handle, DWORD reg, DWORD value, DWORD mask) {
    return WriteCardRegister(handle, reg, CardSpace, value, mask);
}

BOOL WritePort(CardHandle* handle, DWORD reg, DWORD value, DWORD mask) {
    return WriteCardRegister(handle, reg, PortSpace, value, mask);
}

BOOL WriteCardRegisterIfChanged(CardHandle* handle, DWORD reg, RegisterSpace space, DWORD value, DWORD mask) {
    DWORD current = 0;
    if (ReadCardRegister(handle, reg, space, &current) && (current & mask) == value) {
        return FALSE;
    }
    WriteCardRegister(handle, reg, space, value, mask);
    return TRUE;
}

BOOL WriteIndirectRegister(CardHandle* handle, DWORD index, DWORD value, DWORD mask) {
    // The kernel's masked write knows the data register only and not the register behind it: the bits outside
    // the mask are kept here.
    MutexLock together(SequenceMutex);
    DWORD current = 0;
    if (!WriteCard(handle, card_register::ChannelStatusIndex, index, IndirectIndexMask) ||
        !ReadCardRegister(handle, card_register::ChannelStatusData, CardSpace, &current)) {
        return FALSE;
    }
    const DWORD replaced = (current & ~mask) | (value & mask);
    return WriteCard(handle, card_register::ChannelStatusData, replaced, WholeRegister);
}

BOOL SetMixerGain(CardHandle* handle, DWORD index, DWORD value) {
    MutexLock together(SequenceMutex);
    return WriteCard(handle, card_register::MixerIndex, index, MixerIndexMask) &&
           WriteCard(handle, card_register::MixerGain, value, WholeRegister);
}

void DelayMicroseconds(CardHandle* handle, DWORD microseconds) {
    if (microseconds < 1000) {
        Stall(handle, microseconds);
        return;
    }
    const DWORD milliseconds = (microseconds + 999) / 1000;
    const DWORD start = timeGetTime();
    DWORD now = timeGetTime();
    while (now - start < milliseconds) {  // unsigned, so a wrap of the timer does no harm
        now = timeGetTime();
    }
    // The wait began somewhere inside a tick: only the next one makes it whole.
    const DWORD last = now;
    while (timeGetTime() == last) {
    }
}

bool MeasuredRateMatches(CardHandle* handle, const RateMeter& meter, const CardRate& rate) {
    DWORD reading = 0;
    Measure(handle, meter, rate, &reading);
    return !Measure(handle, meter, rate, &reading) || ReadingMatches(reading, rate);
}

BOOL SetStartHold(CardRecord& card, DWORD bits) {
    BorrowedHandle handle(card);
    return WriteCard(handle.Get(), card_register::StartHold, bits, bits);
}

BOOL ReleaseStartHold(CardRecord& card, DWORD bits) {
    BorrowedHandle handle(card);
    return WriteCard(handle.Get(), card_register::StartHold, 0, bits);
}

}  // namespace kestvox
