#include "tests/reliability/story.h"

#include <mmddk.h>

namespace {

constexpr UINT SavePci = 0x4000;
constexpr UINT RestorePci = 0x4001;
constexpr UINT DirectMode = 0x4002;
constexpr int64_t Millisecond = 1000;

// Four buffers in the card, the others wait.
WaveFormat Slow(WaveFormat format) {
    format.Basic().nAvgBytesPerSec = 4;
    return format;
}

void Write(Player& player, unsigned count, DWORD flags = 0) {
    for (unsigned i = 0; i < count; ++i) {
        const auto seed = static_cast<unsigned>(player.Wave.HeaderCount());
        player.HandedIn(player.Wave.Write(Pattern(seed % 3 == 0 ? 1200 : 2400, seed), flags, 3));
    }
}

void Add(Recorder& recorder, unsigned count) {
    for (unsigned i = 0; i < count; ++i) {
        recorder.HandedIn(recorder.Wave.Add(recorder.Wave.HeaderCount() % 3 == 0 ? 600 : 1200));
    }
}

void Position(Player& player) {
    MMTIME time = {};
    time.wType = TIME_BYTES;
    AtBest(waveOutGetPosition(player.Wave.Handle(), &time, sizeof time));
}

void Position(Recorder& recorder) {
    MMTIME time = {};
    time.wType = TIME_SAMPLES;
    AtBest(waveInGetPosition(recorder.Wave.Handle(), &time, sizeof time));
}

void Sleep(Cast& cast) {
    EXPECT_EQ(cast.Driver.DriverProc(DRV_POWER, PWR_SUSPENDREQUEST), 1);
    cast.Cards.PowerCycle(0);
    cast.Cards.PowerCycle(1);
    cast.Cards.Advance(5 * Millisecond);
    EXPECT_EQ(cast.Driver.DriverProc(DRV_POWER, PWR_SUSPENDRESUME), 1);
}

void Play(Cast& cast) {
    Player& output = cast.Output;
    if (!output.Open(0, Slow(PcmFormat(44100, 2, 24)))) {
        return;
    }
    const HWAVEOUT device = output.Wave.Handle();
    Always(waveOutSetVolume(device, 0x8000));
    Always(waveOutPause(device));
    Write(output, 2);
    Write(output, 1, WHDR_BEGINLOOP);
    Write(output, 1);
    Write(output, 1, WHDR_ENDLOOP);
    Write(output, 3);
    Always(waveOutRestart(device));
    cast.Cards.Advance(20 * Millisecond);
    Position(output);
    Always(waveOutPause(device));
    cast.Cards.Advance(5 * Millisecond);
    Always(waveOutRestart(device));
    Sleep(cast);
    cast.Cards.Advance(10 * Millisecond);
    Always(waveOutBreakLoop(device));
    cast.Cards.Advance(200 * Millisecond);
    Write(output, 5);
    cast.Cards.Advance(5 * Millisecond);
    Always(waveOutReset(device));
    Always(waveOutMessage(device, DirectMode, 0, 0));
    Write(output, 2);
    cast.Cards.Advance(50 * Millisecond);
    AtBest(waveOutMessage(device, SavePci, 0, 0));
    AtBest(waveOutMessage(device, RestorePci, 0, 0));
    Write(output, 1);  // the close meets it in the card
    output.Close();
}

void Record(Cast& cast) {
    Recorder& input = cast.Input;
    if (!input.Open(1, Slow(PcmFormat(44100, 2, 24)))) {
        return;
    }
    Add(input, 6);
    Always(input.Wave.Start());
    cast.Cards.Advance(10 * Millisecond);
    Position(input);
    Always(input.Wave.Stop());
    cast.Cards.Advance(5 * Millisecond);
    Add(input, 2);
    Always(input.Wave.Start());
    cast.Cards.Advance(10 * Millisecond);
    Sleep(cast);
    cast.Cards.Advance(50 * Millisecond);
    Add(input, 6);
    cast.Cards.Advance(5 * Millisecond);
    Always(input.Wave.Reset());
    cast.Cards.Advance(5 * Millisecond);
    Always(waveInMessage(input.Wave.Handle(), DirectMode, 0, 0));
    input.Close();
}

void PlayAndRecord(Cast& cast) {
    const WaveFormat format = Slow(PcmFormat(48000, 2, 16));
    const bool output = cast.Output.Open(0, format);
    const bool follower = cast.Follower.Open(2, format);
    const bool input = cast.Input.Open(0, format);
    if (input) {
        Add(cast.Input, 4);
        Always(cast.Input.Wave.Start());
    }
    if (output) {
        Write(cast.Output, 6);
    }
    if (follower) {
        Write(cast.Follower, 6);
    }
    cast.Cards.Advance(20 * Millisecond);
    Sleep(cast);
    cast.Cards.Advance(200 * Millisecond);
    if (input) {
        Always(cast.Input.Wave.Stop());
        cast.Input.Close();
    }
    if (follower) {
        cast.Follower.Close();
    }
    if (output) {
        cast.Output.Close();
    }
}

constexpr Story All[] = {
    {"playback", false, Play},
    {"recording", false, Record},
    {"both on linked cards", true, PlayAndRecord},
};

}  // namespace

std::span<const Story> Stories() {
    return All;
}
