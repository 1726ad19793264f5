// dwBytesRecorded when something is amiss, and direct mode. What a run leaves in its buffers
// otherwise is told in recorded_model_test.cpp.
#include <atomic>
#include <thread>

#include "simulator/machine/host.h"
#include "tests/support/input_test.h"

namespace {

using Sizes = std::vector<DWORD>;

constexpr DWORD Rate = 48000;

class RecordedBytesTest : public InputTest {
protected:
    // 16-bit mono: a whole unit is 16 frames, 32 bytes.
    static WaveFormat Mono() { return PcmFormat(Rate, 1, 16); }

    void Run(unsigned frames) {
        recorder_.Start();
        AdvanceFrames(frames, Rate);
    }
    // What is on its way when the card stands still arrives.
    void Reset() {
        recorder_.Reset();
        Cards().Advance(1000);
    }
    // What has been recorded is, from byte `at` on, the signal from byte `from` on.
    void ExpectRecorded(const WaveFormat& format, const std::vector<simulator::Frame>& signal, size_t at = 0,
                        size_t from = 0) {
        const std::vector<BYTE> sound = ClientBytes(format, signal);
        const std::vector<BYTE> all = recorder_.Recorded();
        ASSERT_LE(at, all.size());
        EXPECT_TRUE(std::equal(all.begin() + static_cast<long>(at), all.end(),
                               sound.begin() + static_cast<long>(from)));
    }
};

// The card has nowhere to write to for a while: what passed then is missing, and nothing else.
TEST_F(RecordedBytesTest, AClientThatComesLateLosesWhatPassed) {
    const auto signal = PlugIn(4000);
    Open(Mono());
    Add(640);
    Run(1000);
    EXPECT_EQ(recorder_.Counts(), Sizes{640});
    EXPECT_EQ(recorder_.Position(), 320u);
    ExpectRecorded(Mono(), signal);
    Add(640);
    AdvanceFrames(1000, Rate);
    EXPECT_EQ(recorder_.Counts(), (Sizes{640, 640}));
    const auto dropped = static_cast<size_t>(Cards().Input(0, Port::Analog).FramesDropped);
    EXPECT_NEAR(static_cast<double>(dropped), 680, 2);
    ExpectRecorded(Mono(), signal, 640, 640 + 2 * dropped);
}

// Whatever the memory held that it would have been recorded into.
TEST_F(RecordedBytesTest, ABufferOfLessThanAWordComesBackEmptyAtOnce) {
    PlugIn(2000);
    Open(Mono());
    recorder_.Start();
    for (const DWORD size : {800u, 3u, 800u}) {
        Add(size, 1, 1);
        AdvanceFrames(size / 2, Rate);
        Cards().Advance(1000);
    }
    EXPECT_EQ(recorder_.Counts(), (Sizes{800, 0, 800}));
}

// It gets nothing of what is on its way to another, and takes nothing of it away.
TEST_F(RecordedBytesTest, ABufferThatTheCardRefusesComesBackEmpty) {
    const auto signal = PlugIn(1000);
    Open(Mono());
    Add(800);
    Run(200);
    Fail("QUEUE_BUFFER");
    Add(800);
    Cards().Advance(1);
    EXPECT_EQ(recorder_.Counts(), Sizes{0});
    AdvanceFrames(300, Rate);
    EXPECT_EQ(recorder_.Counts(), (Sizes{0, 800}));
    ExpectRecorded(Mono(), signal);
}

// A header that comes back during the reset can be recorded into at once.
TEST_F(RecordedBytesTest, WhatIsAddedDuringAResetIsForTheNextStart) {
    std::atomic<unsigned> calls = 0;
    Open(Mono());
    Add(400, 5);
    Run(50);
    recorder_.OnDone([&](WAVEHDR& header) {
        if (calls++ < 5) {
            EXPECT_EQ(recorder_.HandIn(header), MMSYSERR_NOERROR);
        }
    });
    Reset();
    const auto signal = PlugIn(2000);
    const size_t before = recorder_.Recorded().size();
    Run(2000);
    EXPECT_EQ(recorder_.DoneCount(), 10u);
    ASSERT_EQ(recorder_.Recorded().size(), before + 2000);
    ExpectRecorded(Mono(), signal, before);
}

// What it held when it came back before is not recorded once more.
TEST_F(RecordedBytesTest, AHeaderThatAResetOvertakesComesBackEmpty) {
    Open(Mono());
    Add(400);
    Run(1000);
    const HANDLE mutex = CreateMutexW(nullptr, FALSE, TEXT("ZPH_Kestrelvox_Wave_Driver_Mutex"));
    ASSERT_EQ(WaitForSingleObject(mutex, INFINITE), WAIT_OBJECT_0);
    const uint64_t waits = simulator::host::SharedMutexWaits();
    std::thread reset([this] { recorder_.Reset(); });
    EXPECT_TRUE(ComesTrue([&] { return simulator::host::SharedMutexWaits() > waits; }));
    std::thread add([this] { EXPECT_EQ(recorder_.HandIn(recorder_.Header(0)), MMSYSERR_NOERROR); });
    EXPECT_TRUE(ComesTrue([&] { return simulator::host::SharedMutexWaits() > waits + 1; }));
    ReleaseMutex(mutex);
    reset.join();
    add.join();
    CloseHandle(mutex);
    EXPECT_EQ(recorder_.Counts(), (Sizes{400, 0}));
}

// All of them after the stop.
TEST_F(RecordedBytesTest, BuffersThatComeBackLateHoldWhatWasRecorded) {
    const auto signal = PlugIn(2000);
    AddFault("completion:all:late=200000");
    Open(Mono());
    Add(800, 4);
    Run(1700);
    EXPECT_EQ(recorder_.Stop(), MMSYSERR_NOERROR);
    EXPECT_EQ(recorder_.DoneCount(), 0u);
    Cards().Advance(Second);
    EXPECT_EQ(recorder_.Counts(), Sizes(4, 800));
    ExpectRecorded(Mono(), signal);
    EXPECT_EQ(recorder_.Close(), MMSYSERR_NOERROR);
}

TEST_F(RecordedBytesTest, ABufferFromBeforeAResetHoldsNothingOfARunAfterIt) {
    for (const bool goesOn : {false, true}) {
        SCOPED_TRACE(goesOn);
        Open(Mono());
        AddFault("completion:all:late=200000");
        Add(400);
        recorder_.Reset();
        EXPECT_EQ(recorder_.DoneCount(), 0u);
        Add(goesOn ? 40000 : 800);
        Run(300);
        if (!goesOn) {
            recorder_.Stop();
        }
        Cards().Advance(Second);
        EXPECT_EQ(recorder_.Counts(), (Sizes{0, goesOn ? 40000u : 576u}));
        Cards().ClearFaults();
        CloseAndForget();
    }
}

// More runs than are kept apart: the last ones count as one.
TEST_F(RecordedBytesTest, BuffersOfManyRunsThatComeBackLateHoldAllThatWasRecorded) {
    AddFault("completion:all:late=1000000");
    Open(Mono());
    Sizes expected(30, 192);
    for (int run = 0; run < 40; ++run) {
        Add(400);
        Run(100);
        recorder_.Stop();
    }
    EXPECT_EQ(recorder_.DoneCount(), 0u);
    Cards().Advance(2 * Second);
    expected.insert(expected.end(), {400, 400, 400, 400, 320});
    expected.resize(40);
    EXPECT_EQ(recorder_.Counts(), expected);
}

// More runs than are kept apart, of which no buffer tells.
TEST_F(RecordedBytesTest, ARunAfterManyResetsKeepsItsBytes) {
    Open(Mono());
    for (int i = 0; i < 40; ++i) {
        recorder_.Start();
        Reset();
    }
    const auto signal = PlugIn(1000);
    Add(800);
    Run(200);
    recorder_.Stop();
    Reset();
    EXPECT_EQ(recorder_.Counts(), Sizes{384}) << "whole transfer units of 400";
    ExpectRecorded(Mono(), signal);
}

// Neither what still waited in the queue, nor the leave to close with buffers in the card. Another buffer
// comes meanwhile.
TEST_F(RecordedBytesTest, AResetLeavesNothingToWhatFollows) {
    PlugIn(2000);
    WaveFormat format = Mono();
    format.Basic().nAvgBytesPerSec = 0;  // four buffers are in the card, the fifth waits
    Open(format);
    Add(400, 5);
    std::atomic<bool> added = false;
    recorder_.OnDone([&](WAVEHDR&) {
        if (!added.exchange(true)) {
            Add(400);
        }
    });
    Reset();
    Run(300);
    EXPECT_EQ(recorder_.Counts(), (Sizes{0, 0, 0, 0, 0, 400}));
    Fail(simulator::Fault::Completion, 0, simulator::Fault::Kind::Lost);
    Add(400);
    recorder_.Reset();
    recorder_.Stop();
    EXPECT_EQ(recorder_.Close(), unsigned{WAVERR_STILLPLAYING});
}

// A card that does not tell where it is has filled what it gives back; of the rest nothing is known.
TEST_F(RecordedBytesTest, WithoutAPositionOnlyFullBuffersCount) {
    const auto signal = PlugIn(2000);
    Open(Mono());
    Add(800, 4);
    recorder_.Start();
    Fail("GET_POSITION");
    AdvanceFrames(450, Rate);
    EXPECT_EQ(recorder_.Counts(), Sizes{800});
    AdvanceFrames(400, Rate);
    Fail("GET_POSITION", 0);
    recorder_.Stop();
    Cards().Advance(1000);
    EXPECT_EQ(recorder_.Counts(), (Sizes{800, 800, 0}));
    ExpectRecorded(Mono(), signal);
    CloseAndForget();
}

TEST_F(RecordedBytesTest, OnlyWholeSamplesFitAPackedBufferAndAResetGivesItsMemoryBack) {
    Open(PcmFormat(Rate, 2, 24));
    EXPECT_EQ(recorder_.Add(1000), unsigned{MMSYSERR_INVALPARAM});
    const auto afterReset = [this](int buffers) {
        Add(999, buffers);
        Reset();
        Reset();  // gives back what has come too late for the first one, on a busy machine
        return test_system::Usage();
    };
    const std::string usage = afterReset(1);
    EXPECT_EQ(afterReset(3), usage);
}

// Direct mode: the card's own slots, whatever was opened; dithered, nothing is left to dither to.
TEST_F(RecordedBytesTest, DirectModeBringsWholeSlots) {
    for (const DWORD dither : {0u, 1u}) {
        StoreSetting(0, TEXT("DitherADC"), dither);
        Open(PcmFormat(Rate, 2, 16));
        EXPECT_EQ(waveInMessage(recorder_.Handle(), DirectMode, 0, 0), MMSYSERR_NOERROR);
        EXPECT_EQ(Cards().InputRegister(0, Port::Analog, 0) & 0xC0, 0xC0);
        const auto signal = PlugIn(1000);
        Cards().ClearTrace();
        ASSERT_EQ(recorder_.Add(4000), dither != 0 ? unsigned{MMSYSERR_INVALPARAM} : MMSYSERR_NOERROR);
        if (dither == 0) {
            EXPECT_EQ(TraceText().back(), "QUEUE_BUFFER 1");
            Run(1000);
            ExpectRecorded(PcmFormat(Rate, 2, 32), signal);
            EXPECT_EQ(recorder_.Position(TIME_BYTES), 4000u);
        }
        CloseAndForget();
        UnloadDriver();
    }
}

}  // namespace
