// What a recording makes of the card's position: one of many hours, and one that is of another run by now.
#include <atomic>

#include "simulator/requests/protocol.h"
#include "tests/support/input_test.h"
#include "tests/support/request_gate_linux.h"

namespace {

using RecordedPositionTest = InputTest;

TEST_F(RecordedPositionTest, FullBuffersReportTheirWholeLength) {
    for (const DWORD frames : {0x1FFFFFFFu, 0x20000000u, 0x20000100u, 0x3FFFF000u}) {  // of four bytes
        SCOPED_TRACE(frames);
        RequestGate gate;
        Open(PcmFormat(48000, 2, 16));
        Add(800, 4);
        recorder_.Start();
        gate.After = [frames](DWORD code, void* position) {
            *static_cast<DWORD*>(position) += code == simulator::GetPosition ? frames : 0;
        };
        AdvanceFrames(500, 48000);
        gate.After = nullptr;
        EXPECT_EQ(recorder_.Counts(), (std::vector<DWORD>{800, 800}));
        recorder_.Reset();
        Cards().Advance(1);  // a reset waits no longer than 200 ms for the service thread
        EXPECT_EQ(recorder_.Counts(), (std::vector<DWORD>{800, 800, 384, 0}));
        CloseAndForget();
    }
}

// A stop, or a stop and a start, while the completion of a full buffer is about to ask.
TEST_F(RecordedPositionTest, ARunThatEndsMeanwhileHasFilledTheBuffer) {
    for (const bool goesOn : {false, true}) {
        SCOPED_TRACE(goesOn);
        RequestGate gate;
        Open(PcmFormat(48000, 2, 16));
        Add(800, 4);
        recorder_.Start();
        std::atomic<bool> met = false;
        gate.Before = [&](DWORD code) {
            if (code == simulator::GetPosition && !met.exchange(true)) {
                recorder_.Stop();
                if (goesOn) {
                    recorder_.Start();
                }
            }
        };
        AdvanceFrames(350, 48000);
        EXPECT_TRUE(met);
        gate.Before = nullptr;
        EXPECT_EQ(recorder_.Counts().at(0), 800u);
        recorder_.Reset();
        Cards().Advance(1);
        EXPECT_LE(recorder_.Counts().at(1), 600u) << "what was left of 350 frames";
        CloseAndForget();
    }
}

}  // namespace
