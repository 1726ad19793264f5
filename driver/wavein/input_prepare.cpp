#include "card/channel_status.h"
#include "card/registers.h"
#include "clock/sample_clock.h"
#include "eventlog/driver_event.h"
#include "stream/synchronized_start.h"
#include "wavein/input_parts.h"

namespace kestvox {

namespace {

constexpr DWORD AnalogPort = 0;
constexpr DWORD ReceiverSettle = 50000;  // microseconds

// Mixer inputs that the port's signal feeds: of the analog output's mixer, then of the digital one's.
constexpr DWORD GainsOfPort[PortCount][PortCount] = {{0, 4}, {1, 5}};

void SelectSource(StreamInstance* stream) {
    if (stream->Port != AnalogPort) {
        WritePort(stream->Device, port_register::Receiver, 0, PortReceiverOff);
        DelayMicroseconds(stream->Device, ReceiverSettle);
    } else if (stream->Format.Conversion == Dithered) {
        // Dither starts from the card's full width.
        WritePort(stream->Device, port_register::Control, SlotLeft << PortFormatShift, PortFormatMask);
    }
}

bool RateIsChecked(const StreamInstance* stream) {
    const CardSettings& settings = stream->Card->Settings;
    return stream->Port != AnalogPort && settings.CheckClocks != 0 &&
           settings.ClockSource != DigitalInputClock;
}

bool IncomingRateMatches(StreamInstance* stream) {
    const RateMeter meter = {PortSpace, port_register::Receiver, port_register::MeasuredRate};
    return MeasuredRateMatches(stream->Device, meter, CardRateOfCode(stream->Format.RateCode));
}

void RestoreGains(StreamInstance* stream) {
    for (unsigned output = 0; output < PortCount; ++output) {
        const DWORD index = GainsOfPort[stream->Port][output];
        const DWORD stored = WorkingGain(*stream->Card, index);
        if (stored == 0) {
            continue;
        }
        SetMixerGain(stream->Device, index, stored);
        if (output != AnalogPort) {
            SetDigitalOutputStatus(stream->Device, *stream->Card, FALSE);
        }
    }
}

void SilenceGains(StreamInstance* stream) {
    for (const DWORD index : GainsOfPort[stream->Port]) {
        if (WorkingGain(*stream->Card, index) != 0) {
            SetMixerGain(stream->Device, index, 0);
        }
    }
}

}  // namespace

MMRESULT PrepareInput(StreamInstance* stream, bool ignoreClockError) {
    const MMRESULT result = ProgramSampleClock(stream, ignoreClockError);
    if (result != MMSYSERR_NOERROR && !ignoreClockError) {
        return result;
    }
    WritePort(stream->Device, port_register::Control, 0, PortArm);
    stream->ArmBitSet = 0;
    SelectSource(stream);
    if (!ignoreClockError && RateIsChecked(stream) && !IncomingRateMatches(stream)) {
        ReportDriverEvent(InputDataRateMismatch);
        return MMSYSERR_ERROR;
    }
    DisarmChannel(stream->Device);
    RestoreGains(stream);
    return MMSYSERR_NOERROR;
}

void CleanUpInput(StreamInstance* stream) {
    ForgetStart(stream);  // closed while suspended
    SilenceGains(stream);
    if (stream->Port != AnalogPort && stream->Card->ActiveClockSource != DigitalInputClock) {
        WritePort(stream->Device, port_register::Receiver, PortReceiverOff, PortReceiverOff);
    }
}

}  // namespace kestvox
