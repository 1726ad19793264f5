// Somebody is in the middle of handing a buffer over when something else happens to the stream.
#include <atomic>

#include "tests/support/power_test.h"
#include "tests/support/request_gate_linux.h"
#include "tests/support/wave_player.h"
#include "tests/support/wave_recorder.h"
#include "tests/support/wave_sound.h"

namespace {

using simulator::Port;

constexpr const char* Requests[] = {"BEGIN_BUFFER", "MAP_BUFFER", "SET_BUFFER_COOKIE", "QUEUE_BUFFER"};

class HandOverTurnTest : public PowerTest {
protected:
    HandOverTurnTest() : PowerTest(1) {}

    void SetUp() override { waveOutGetNumDevs(); }

    unsigned InputsInFlight() { return Cards().Input(0, Port::Analog).BuffersInFlight; }
    static void Add(WaveRecorder& recorder, int buffers) {
        for (int i = 0; i < buffers; ++i) {
            EXPECT_EQ(recorder.Add(400), MMSYSERR_NOERROR);
        }
    }
    void Write(WavePlayer& player, unsigned buffers) {
        for (unsigned i = 0; i < buffers; ++i) {
            const std::vector<BYTE> data = Pattern(4000, static_cast<unsigned>(player.HeaderCount()));
            written_.insert(written_.end(), data.begin(), data.end());
            EXPECT_EQ(player.Write(data), MMSYSERR_NOERROR);
        }
    }
    void Open(WavePlayer& player) {
        ASSERT_EQ(player.Open(0, PcmFormat(48000, 2, 16)), MMSYSERR_NOERROR);
        written_.clear();
        Cards().ForgetAudio();
    }
    void ExpectHeard(WavePlayer& player) {
        Cards().Advance(Second);
        EXPECT_TRUE(Cards().Played(0, Port::Analog) == Sound(PcmFormat(48000, 2, 16), written_));
        player.ExpectEachReturnedOnce();
    }
    // Four buffers are in the card, however small.
    static WaveFormat WithoutRate() {
        WaveFormat format = PcmFormat(48000, 2, 16);
        format.Basic().nAvgBytesPerSec = 0;
        return format;
    }
    // The four requests of each buffer, one buffer after the other, and nothing between them.
    void ExpectUnmixed() {
        std::vector<std::string> names;
        for (const simulator::TraceEntry& entry : Cards().Trace()) {
            const std::string name = simulator::RequestName(entry.Code);
            if (name.ends_with("_BUFFER") || name.ends_with("_COOKIE")) {
                names.push_back(name);
            }
        }
        for (size_t i = 0; i < names.size(); ++i) {
            EXPECT_EQ(names[i], Requests[i % std::size(Requests)]) << i;
        }
        EXPECT_EQ(names.size() % std::size(Requests), 0u);
    }

    std::vector<BYTE> written_;
};

TEST_F(HandOverTurnTest, BuffersThatAreAddedMeanwhileReachTheCardToo) {
    struct Case {
        const char* Name;
        WaveFormat Format;
        unsigned Reach;
    };
    const Case cases[] = {{"a quarter of a second", PcmFormat(48000, 2, 16), 41}, {"four", WithoutRate(), 4}};
    for (const Case& test : cases) {
        for (const char* request : Requests) {
            SCOPED_TRACE(testing::Message() << test.Name << ", " << request);
            WaveRecorder recorder;
            RequestGate gate;
            ASSERT_EQ(recorder.Open(0, test.Format), MMSYSERR_NOERROR);
            Cards().ClearTrace();
            gate.Before(request, [&recorder] { Add(recorder, 40); });
            Add(recorder, 1);
            EXPECT_TRUE(gate.Passed());
            EXPECT_EQ(InputsInFlight(), test.Reach);
            ExpectUnmixed();
            recorder.Shut();
            recorder.ExpectEachReturnedOnce();
        }
    }
}

// Three of the four that the card has are filled; each completion would hand over all that the rule allows.
TEST_F(HandOverTurnTest, ACompletionsRefillIsMadeForIt) {
    for (const char* request : Requests) {
        SCOPED_TRACE(request);
        WaveRecorder recorder;
        RequestGate gate;
        ASSERT_EQ(recorder.Open(0, WithoutRate()), MMSYSERR_NOERROR);
        Add(recorder, 3);
        ASSERT_EQ(recorder.Start(), MMSYSERR_NOERROR);
        Cards().ClearTrace();
        gate.Before(request, [&] {
            Add(recorder, 5);
            Cards().Advance(Second / 100);
            EXPECT_EQ(recorder.DoneCount(), 3u);
        });
        Add(recorder, 1);
        EXPECT_TRUE(gate.Passed());
        EXPECT_EQ(InputsInFlight(), 4u);
        ExpectUnmixed();
        recorder.Shut();
        recorder.ExpectEachReturnedOnce();
    }
}

// The stop brings the buffer under way, and the client adds it again from its callback, while the stop is
// still at its last request.
TEST_F(HandOverTurnTest, ABufferAddedInTheMiddleOfAStopStartsNothing) {
    const WaveFormat format = PcmFormat(48000, 2, 16);
    WaveRecorder recorder;
    RequestGate gate;
    ASSERT_EQ(recorder.Open(0, format), MMSYSERR_NOERROR);
    std::atomic<bool> added = false;
    recorder.OnDone([&](WAVEHDR& header) {
        EXPECT_EQ(recorder.HandIn(header), MMSYSERR_NOERROR);
        added = true;
        added.notify_one();
    });
    Add(recorder, 5);
    ASSERT_EQ(recorder.Start(), MMSYSERR_NOERROR);
    Cards().Advance(4500);
    const DWORD position = recorder.Position();
    added = false;
    gate.Answer("STOP_TRANSFER", [&added](void*) { added.wait(false); });
    EXPECT_EQ(recorder.Stop(), MMSYSERR_NOERROR);
    EXPECT_EQ(recorder.Position(), position);
    Cards().Advance(Second);
    EXPECT_EQ(InputsInFlight(), 5u);
    EXPECT_EQ(recorder.Position(), position);
    recorder.OnDone(nullptr);
}

// The first written buffer is in the middle of its way; those written meanwhile come after it, in order.
TEST_F(HandOverTurnTest, WhatIsWrittenMeanwhileIsHeardInOrder) {
    for (const char* request : Requests) {
        SCOPED_TRACE(request);
        WavePlayer player;
        RequestGate gate;
        Open(player);
        gate.Before(request, [&] { Write(player, 19); });
        const std::vector<BYTE> first = Pattern(400, 0);
        EXPECT_EQ(player.Write(first), MMSYSERR_NOERROR);
        written_.insert(written_.begin(), first.begin(), first.end());
        EXPECT_TRUE(gate.Passed());
        ExpectHeard(player);
    }
}

// The computer falls asleep: the kernel refuses the rest of the buffer's requests, and those of the next.
TEST_F(HandOverTurnTest, ABufferThatASleepKeepsFromTheCardIsHeardAfterIt) {
    for (const char* request : Requests) {
        for (const unsigned before : {0u, 2u}) {
            SCOPED_TRACE(testing::Message() << request << ", " << before << " before it");
            WavePlayer player;
            RequestGate gate;
            Open(player);
            Write(player, before);
            gate.Before(request, [this] { Sleep(); });
            Write(player, 3);
            EXPECT_TRUE(gate.Passed());
            EXPECT_EQ(player.DoneCount(), 0u) << "nothing comes back unplayed";
            Wake();
            ExpectHeard(player);
        }
    }
}

}  // namespace
