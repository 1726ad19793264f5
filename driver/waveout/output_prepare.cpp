#include "card/channel_status.h"
#include "card/registers.h"
#include "clock/sample_clock.h"
#include "format/wave_format.h"
#include "stream/stream_control.h"
#include "stream/synchronized_start.h"
#include "waveout/output_parts.h"

namespace kestvox {

namespace {

constexpr DWORD AnalogPort = 0;

// Mixer inputs that the port's playback feeds: of the analog output's mixer, then of the digital one's.
constexpr DWORD GainsOfPort[PortCount][PortCount] = {{2, 6}, {3, 7}};

// Only gains that are not down are touched.
void SetStoredGains(StreamInstance* stream, bool audible) {
    for (const DWORD index : GainsOfPort[stream->Port]) {
        if (const DWORD stored = WorkingGain(*stream->Card, index); stored != 0) {
            SetMixerGain(stream->Device, index, audible ? stored : 0);
        }
    }
}

}  // namespace

DWORD OwnPlaybackGain(DWORD port) {
    return GainsOfPort[port][port];
}

MMRESULT PrepareOutput(StreamInstance* stream, bool ignoreClockError) {
    const MMRESULT result = ProgramSampleClock(stream, ignoreClockError);
    if (result != MMSYSERR_NOERROR && !ignoreClockError) {
        return result;
    }
    WritePort(stream->Device, port_register::Control, 0, PortArm);
    stream->ArmBitSet = 0;
    if (stream->Port != AnalogPort) {
        SetDigitalOutputStatus(stream->Device, *stream->Card, stream->Format.FormatTag == FormatTagNonAudio);
    }
    DisarmChannel(stream->Device);
    SetStoredGains(stream, true);
    ApplyVolume(stream);
    return MMSYSERR_NOERROR;
}

void CleanUpOutput(StreamInstance* stream) {
    ForgetStart(stream);  // closed while suspended
    SetStoredGains(stream, false);
}

}  // namespace kestvox
