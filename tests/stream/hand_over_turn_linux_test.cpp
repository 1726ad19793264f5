// Somebody is in the middle of handing a buffer over when something else happens to the stream.
#include <atomic>

#include "simulator/requests/protocol.h"
#include "tests/support/output_test.h"
#include "tests/support/request_gate_linux.h"

namespace {

class HandOverTurnTest : public OutputTest {
protected:
    void SetUp() override { waveOutGetNumDevs(); }
};

// The stop brings the buffer under way, and the client adds it again from its callback, while the stop is
// still at its last request.
TEST_F(HandOverTurnTest, ABufferAddedInTheMiddleOfAStopStartsNothing) {
    RequestGate gate;
    WaveRecorder recorder(0, PcmFormat(48000, 2, 16));
    std::atomic<bool> added = false;
    recorder.OnDone([&](WAVEHDR& header) {
        EXPECT_EQ(recorder.HandIn(header), MMSYSERR_NOERROR);
        added = true;
        added.notify_one();
    });
    for (int i = 0; i < 5; ++i) {
        ASSERT_EQ(recorder.Add(400), MMSYSERR_NOERROR);
    }
    ASSERT_EQ(recorder.Start(), MMSYSERR_NOERROR);
    Cards().Advance(4500);
    const DWORD position = recorder.Position();
    added = false;
    gate.After = [&added](DWORD code, void*) {
        if (code == simulator::StopTransfer) {
            added.wait(false);
        }
    };
    EXPECT_EQ(recorder.Stop(), MMSYSERR_NOERROR);
    EXPECT_EQ(recorder.Position(), position);
    Cards().Advance(Second);
    EXPECT_EQ(Cards().Input(0, simulator::Port::Analog).BuffersInFlight, 5u);
    EXPECT_EQ(recorder.Position(), position);
    recorder.OnDone(nullptr);
}

// The computer falls asleep: the kernel refuses the rest of the buffer's requests, and those of the next.
// When a reset brings the buffer back instead, it does not count as being in the card, either.
TEST_F(HandOverTurnTest, ABufferThatASleepKeepsFromTheCardIsHeardOrResetAfterIt) {
    for (const char* request : {"BEGIN_BUFFER", "MAP_BUFFER", "SET_BUFFER_COOKIE", "QUEUE_BUFFER"}) {
        for (const auto& [before, heard] : {std::pair{0u, true}, {2u, true}, {0u, false}}) {
            SCOPED_TRACE(testing::Message() << request << ", " << before << " before it, heard " << heard);
            RequestGate gate;
            Open();
            Write(before);
            bool slept = false;
            gate.Before = [&](DWORD code) {
                if (code == simulator::RequestCode(request) && !std::exchange(slept, true)) {
                    FallAsleep();
                }
            };
            Write(3);
            EXPECT_TRUE(slept);
            EXPECT_EQ(player_.DoneCount(), 0u) << "nothing comes back unplayed";
            if (heard) {
                WakeUp();
                ExpectAllPlayed();
            } else {
                EXPECT_EQ(player_.Reset(), MMSYSERR_NOERROR);
                ExpectEachReturnedOnce();
                EXPECT_EQ(player_.Stop(), MMSYSERR_NOERROR);  // from now on a close asks
            }
            CloseAndForget();
            WakeUp();
        }
    }
}

// A card that has been told to stop and goes on all the same does not keep its client for ever.
TEST_F(HandOverTurnTest, AStopWaitsATenthOfASecondOfAudioForThePositionToSettle) {
    constexpr DWORD Step = 1000;  // frames between two looks
    RequestGate gate;
    WaveRecorder recorder(0, PcmFormat(48000, 2, 16));
    ASSERT_EQ(recorder.Start(), MMSYSERR_NOERROR);
    DWORD looks = 0;
    gate.After = [&looks](DWORD code, void* position) {
        if (code == simulator::GetPosition) {
            *static_cast<DWORD*>(position) = Step * ++looks;
        }
    };
    EXPECT_EQ(recorder.Stop(), MMSYSERR_NOERROR);
    EXPECT_EQ(looks, 2 + 4800 / Step + 1);
}

// The card gives everything back before the reset has emptied the queue.
TEST_F(HandOverTurnTest, ALoopThatAResetMeetsComesBackWithNoPassLeft) {
    RequestGate gate;
    WavePlayer player(0, PcmFormat(48000, 2, 16));
    ASSERT_EQ(player.Write(Pattern(4000), WHDR_BEGINLOOP | WHDR_ENDLOOP, 1000), MMSYSERR_NOERROR);
    gate.After = [&](DWORD code, void*) {
        if (code == simulator::FlushBuffers) {
            Cards().Advance(1);
            EXPECT_EQ(player.DoneCount(), 1u);
        }
    };
    EXPECT_EQ(player.Reset(), MMSYSERR_NOERROR);
    gate.After = nullptr;
    EXPECT_EQ(player.Header(0).dwLoops, 0u);
    EXPECT_EQ(player.DoneCount(), 1u);
}

}  // namespace
