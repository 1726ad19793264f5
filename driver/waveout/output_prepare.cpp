#include <windows.h>
#include <mmsystem.h>
#include <mmddk.h>

#include "card/channel_status.h"
#include "card/registers.h"
#include "clock/sample_clock.h"
#include "stream/wave_format.h"
#include "waveout/output_steps.h"
#include "waveout/wave_output.h"

namespace kestvox {

namespace {

constexpr DWORD AnalogPort = 0;

// Mixer inputs that the port's playback feeds: of the analog output's mixer, then of the digital one's.
struct PlaybackGains {
    DWORD Inputs[PortCount];
};
constexpr PlaybackGains GainsOfPort[PortCount] = {{{2, 6}}, {{3, 7}}};

constexpr DWORD FullGain = 128;
constexpr DWORD FullVolume = 65535;

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

const Direction OutputDirection = {
    .FirstChannel = OutputChannel,
    .HoldBit = OutputHold,
    .OpenMessage = WOM_OPEN,
    .CloseMessage = WOM_CLOSE,
    .DoneMessage = WOM_DONE,
    .WholeWords = false,
    .OpenCount = &CardRecord::OpenOutputs,
    .RunningCount = &CardRecord::RunningOutputs,
    .OtherOpenCount = &CardRecord::OpenInputs,
    .OtherRunningCount = &CardRecord::RunningInputs,
    .PortOpen = &CardRecord::OutputOpen,
    .PortRunning = &CardRecord::OutputRunning,
    .PortPaused = &CardRecord::OutputPaused,
    .PortResumePending = &CardRecord::OutputResumePending,
    .AcceptFormat = AcceptOutputFormat,
    .InitializeFields = InitializeOutputFields,
    .Prepare = PrepareOutput,
    .CleanUp = CleanUpOutput,
    .Reset = ResetOutput,
    .Suspend = SuspendOutput,
    .Start = RestartOutput,
    .TakePendingHeader = TakePendingOutput,
    .OnBufferDone = OutputBufferDone,
};

DWORD OwnPlaybackGain(DWORD port) {
    return GainsOfPort[port].Inputs[port];
}

void InitializeOutputFields(StreamInstance* stream) {
    stream->Volume = WorkingGain(*stream->Card, OwnPlaybackGain(stream->Port)) * FullVolume / FullGain;
}

MMRESULT PrepareOutput(StreamInstance* stream, bool ignoreClockError) {
    const MMRESULT result = ProgramSampleClock(stream, ignoreClockError);
    if (result != MMSYSERR_NOERROR && !ignoreClockError) {
        return result;
    }
    WritePort(stream->Device, port_register::Control, 0, PortArm);
    stream->ArmBitSet = 0;
    if (stream->Port != AnalogPort) {
        SetDigitalOutputStatus(stream->Device, *stream->Card, stream->FormatTag == FormatTagNonAudio);
    }
    DisarmChannel(stream->Device);
    WriteStoredGains(stream, [](DWORD stored) { return stored; });
    return MMSYSERR_NOERROR;
}

void CleanUpOutput(StreamInstance* stream) {
    stream->PortFlag(&CardRecord::OutputResumePending) = 0;  // closed while suspended
    WriteStoredGains(stream, [](DWORD) { return 0u; });
}

MMRESULT GetOutputVolume(StreamInstance* stream, DWORD* volume) {
    if (volume == nullptr) {
        return MMSYSERR_INVALPARAM;
    }
    *volume = stream->Volume;
    return MMSYSERR_NOERROR;
}

MMRESULT SetOutputVolume(StreamInstance* stream, DWORD volume) {
    const DWORD left = LOWORD(volume);
    stream->Volume = left;
    SetMixerGain(stream->Device, OwnPlaybackGain(stream->Port), left * FullGain / FullVolume);
    return MMSYSERR_NOERROR;
}

}  // namespace kestvox
