#include "card/channel_status.h"
#include "card/registers.h"
#include "clock/sample_clock.h"
#include "stream/wave_format.h"
#include "waveout/output_parts.h"

namespace kestvox {

namespace {

constexpr DWORD AnalogPort = 0;

// Mixer inputs that the port's playback feeds: of the analog output's mixer, then of the digital one's.
struct PlaybackGains {
    DWORD Inputs[PortCount];
};
constexpr PlaybackGains GainsOfPort[PortCount] = {{{2, 6}}, {{3, 7}}};

template <typename ValueOf>
void WriteStoredGains(StreamInstance* stream, ValueOf valueOf) {
    const PlaybackGains& gains = GainsOfPort[stream->Port];
    for (const DWORD index : gains.Inputs) {
        if (const DWORD stored = WorkingGain(*stream->Card, index); stored != 0) {
            SetMixerGain(stream->Device, index, valueOf(stored));
        }
    }
}

}  // namespace

DWORD OwnPlaybackGain(DWORD port) {
    return GainsOfPort[port].Inputs[port];
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
    WriteStoredGains(stream, [](DWORD stored) { return stored; });
    if (stream->VolumeIsSet != 0) {
        SetMixerGain(stream->Device, OwnPlaybackGain(stream->Port), GainOfVolume(stream->Volume));
    }
    return MMSYSERR_NOERROR;
}

void CleanUpOutput(StreamInstance* stream) {
    stream->PortFlag(&CardRecord::OutputResumePending) = 0;  // closed while suspended
    WriteStoredGains(stream, [](DWORD) { return 0u; });
}

}  // namespace kestvox
