// A recording of many hours, whose buffers are far behind the card's position.
#include "tests/support/input_test.h"
#include "tests/support/request_gate_linux.h"

namespace {

class FarPositionTest : public InputTest {};

TEST_F(FarPositionTest, FullBuffersReportTheirWholeLength) {
    constexpr DWORD Ahead[] = {0x1FFFFFFF, 0x20000000, 0x20000100, 0x3FFFF000};  // frames of four bytes
    RequestGate gate;
    for (const DWORD frames : Ahead) {
        SCOPED_TRACE(frames);
        const auto signal = PlugIn(2000);
        const WaveFormat format = PcmFormat(48000, 2, 16);
        Open(format);
        Add(800, 4);
        recorder_.Start();
        gate.Answer("GET_POSITION", [frames](void* position) { *static_cast<DWORD*>(position) += frames; });
        AdvanceFrames(500, 48000);
        gate.Answer("GET_POSITION", nullptr);
        EXPECT_EQ(recorder_.Counts(), (std::vector<DWORD>{800, 800}));
        recorder_.Reset();
        EXPECT_EQ(recorder_.Counts(), (std::vector<DWORD>{800, 800, 384, 0}));
        std::vector<BYTE> expected = ClientBytes(format, signal);
        expected.resize(1984);
        EXPECT_TRUE(recorder_.Recorded() == expected);
        ExpectEachReturnedOnce();
        recorder_.Shut();
        recorder_.Forget();
    }
}

}  // namespace
