// A recording of many hours, whose buffers are far behind the card's position.
#include "simulator/requests/protocol.h"
#include "tests/support/input_test.h"
#include "tests/support/request_gate_linux.h"

namespace {

using FarPositionTest = InputTest;

TEST_F(FarPositionTest, FullBuffersReportTheirWholeLength) {
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

}  // namespace
