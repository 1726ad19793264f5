#include "tests/reliability/story.h"

#include "tests/reliability/answers.h"

namespace {

constexpr int64_t Millisecond = 1000;

// Four buffers in the card, the others wait.
WaveFormat Slow(WaveFormat format) {
    format.Basic().nAvgBytesPerSec = 4;
    return format;
}

template <typename Client>
bool Open(Client& client, UINT device, const WaveFormat& format) {
    const MMRESULT result = client.Open(device, format);
    EXPECT_TRUE(result == MMSYSERR_NOERROR || IsRefusalOfOpen(result)) << "open answers " << result;
    return result == MMSYSERR_NOERROR;
}

void ExpectTakenOrNoMemory(MMRESULT result) {
    EXPECT_TRUE(result == MMSYSERR_NOERROR || result == MMSYSERR_NOMEM) << result;
}

void Write(WavePlayer& player, unsigned count, DWORD flags = 0) {
    for (unsigned i = 0; i < count; ++i) {
        const auto seed = static_cast<unsigned>(player.HeaderCount());
        ExpectTakenOrNoMemory(player.Write(Pattern(seed % 3 == 0 ? 1200 : 2400, seed), flags, 3));
    }
}

void Add(WaveRecorder& recorder, unsigned count) {
    for (unsigned i = 0; i < count; ++i) {
        ExpectTakenOrNoMemory(recorder.Add(recorder.HeaderCount() % 3 == 0 ? 600 : 1200));
    }
}

template <typename Calls>
void Position(WaveClient<Calls>& client, UINT type) {
    MMTIME time = {};
    time.wType = type;
    AtBest(Calls::Position(client.Handle(), &time, sizeof time));
}

// A device that is busy says so; after a reset it never is.
template <typename Client>
void Close(Client& client) {
    MMRESULT result = client.Close();
    if (result == WAVERR_STILLPLAYING) {
        Always(client.Reset());
        result = client.Close();
    }
    Always(result);
}

template <typename Client>
void ExpectClientsBalance(Client& client) {
    client.ExpectEachReturnedOnce();
    const std::vector<UINT> messages = client.Messages();
    if (messages.empty() && client.HeaderCount() == 0) {
        return;  // it was never open
    }
    ASSERT_EQ(messages.size(), 2 + client.DoneCount()) << "one open, one close";
    EXPECT_TRUE(messages.front() == WOM_OPEN || messages.front() == WIM_OPEN);
    EXPECT_TRUE(messages.back() == WOM_CLOSE || messages.back() == WIM_CLOSE);
}

void Sleep(Cast& cast) {
    EXPECT_EQ(cast.Driver.DriverProc(DRV_POWER, PWR_SUSPENDREQUEST), 1);
    cast.Cards.PowerCycle(0);
    cast.Cards.PowerCycle(1);
    cast.Cards.Advance(5 * Millisecond);
    EXPECT_EQ(cast.Driver.DriverProc(DRV_POWER, PWR_SUSPENDRESUME), 1);
}

void Play(Cast& cast) {
    WavePlayer& output = cast.Output;
    if (!Open(output, 0, Slow(PcmFormat(44100, 2, 24)))) {
        return;
    }
    const HWAVEOUT device = output.Handle();
    Always(waveOutSetVolume(device, 0x8000));
    Always(waveOutPause(device));
    Write(output, 2);
    Write(output, 1, WHDR_BEGINLOOP);
    Write(output, 1);
    Write(output, 1, WHDR_ENDLOOP);
    Write(output, 3);
    Always(waveOutRestart(device));
    cast.Cards.Advance(20 * Millisecond);
    Position(output, TIME_BYTES);
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
    Close(output);
}

void Record(Cast& cast) {
    WaveRecorder& input = cast.Input;
    if (!Open(input, 1, Slow(PcmFormat(44100, 2, 24)))) {
        return;
    }
    Add(input, 6);
    Always(input.Start());
    cast.Cards.Advance(10 * Millisecond);
    Position(input, TIME_SAMPLES);
    Always(input.Stop());
    cast.Cards.Advance(5 * Millisecond);
    Add(input, 2);
    Always(input.Start());
    cast.Cards.Advance(10 * Millisecond);
    Sleep(cast);
    cast.Cards.Advance(50 * Millisecond);
    Add(input, 6);
    cast.Cards.Advance(5 * Millisecond);
    Always(input.Reset());
    cast.Cards.Advance(5 * Millisecond);
    Always(waveInMessage(input.Handle(), DirectMode, 0, 0));
    Close(input);
}

void PlayAndRecord(Cast& cast) {
    const WaveFormat format = Slow(PcmFormat(48000, 2, 16));
    const bool output = Open(cast.Output, 0, format);
    const bool follower = Open(cast.Follower, 2, format);
    const bool input = Open(cast.Input, 0, format);
    if (input) {
        Add(cast.Input, 4);
        Always(cast.Input.Start());
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
        Always(cast.Input.Stop());
        Close(cast.Input);
    }
    if (follower) {
        Close(cast.Follower);
    }
    if (output) {
        Close(cast.Output);
    }
}

constexpr Story All[] = {
    {"playback", false, Play},
    {"recording", false, Record},
    {"both on linked cards", true, PlayAndRecord},
};

}  // namespace

void Cast::ExpectBalance() {
    ExpectClientsBalance(Output);
    ExpectClientsBalance(Input);
    ExpectClientsBalance(Follower);
}

std::span<const Story> Stories() {
    return All;
}
