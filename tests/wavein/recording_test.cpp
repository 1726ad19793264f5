// Recordings that go on and on, and what dither makes of the samples. What each format's buffers hold is told
// in recorded_model_test.cpp.
#include "convert/capture.h"
#include "tests/support/input_test.h"

namespace {

using simulator::Frame;
using simulator::Port;

class RecordingTest : public InputTest {};

TEST_F(RecordingTest, ALongRecordingRunsOnWhileTheClientAddsAgain) {
    const WaveFormat format = PcmFormat(48000, 2, 16);
    const std::vector<BYTE> expected = ClientBytes(format, PlugIn(96000));
    Open(format);
    recorder_.OnDone([this](WAVEHDR& header) { recorder_.AddAgain(header); });
    Add(4800, 5);
    recorder_.Start();
    Cards().Advance(2 * Second);
    recorder_.Stop();
    Cards().Advance(1000);
    const std::vector<BYTE> recorded = recorder_.Recorded();
    EXPECT_NEAR(recorder_.Position(), 96000, 1);
    EXPECT_EQ(recorded.size(), recorder_.Position() / 8 * 8 * 4);
    EXPECT_TRUE(std::equal(recorded.begin(), recorded.end(), expected.begin()));
    EXPECT_EQ(Cards().Input(0, Port::Analog).FramesDropped, 0u);
    recorder_.OnDone(nullptr);
}

// --- dithered ----------------------------------------------------------------------------------

// The routine's own account of the whole signal at once.
std::vector<BYTE> Dithered(const WAVEFORMATEX& format, const std::vector<Frame>& frames, DWORD type) {
    std::vector<int32_t> slots;
    for (const Frame& frame : frames) {
        slots.push_back(frame.Left);
        if (format.nChannels == 2) {
            slots.push_back(frame.Right);
        }
    }
    std::vector<BYTE> data(slots.size() * format.wBitsPerSample / 8);
    kestvox::DitherState state = {};
    if (format.wBitsPerSample == 8) {
        kestvox::DitherCapture8(data.data(), slots.data(), slots.size(), type, format.nChannels, state);
    } else {
        kestvox::DitherCapture16(reinterpret_cast<int16_t*>(data.data()), slots.data(), slots.size(), type,
                                 format.nChannels, state);
    }
    return data;
}

class DitheredRecordingTest : public InputTest {
protected:
    // Sizes are whole frames and whole words.
    void ExpectDithered(const WaveFormat& format, DWORD type) {
        const std::vector<BYTE> expected = Dithered(format, PlugIn(3000), type);
        const size_t before = recorder_.Recorded().size();
        size_t total = 0;
        for (const size_t size : {800u, 4u, 404u, 1000u}) {
            Add(size, 1, static_cast<unsigned>(total) & 2);
            total += size;
        }
        recorder_.Start();
        Cards().Advance(Second / 10);
        const std::vector<BYTE> all = recorder_.Recorded();
        ASSERT_EQ(all.size(), before + total);
        EXPECT_TRUE(std::equal(all.begin() + static_cast<long>(before), all.end(), expected.begin()));
        ExpectEachReturnedOnce();
        recorder_.Reset();
    }
};

// Nor does a recording hear of the one before: a reset begins the random sequence again.
TEST_F(DitheredRecordingTest, BufferBoundariesAreNotHeard) {
    for (DWORD type = 1; type <= 4; ++type) {
        StoreSetting(0, TEXT("DitherADC"), type);
        for (const WORD bits : {WORD{8}, WORD{16}}) {
            for (const WORD channels : {WORD{1}, WORD{2}}) {
                SCOPED_TRACE(testing::Message()
                             << "type " << type << ", " << channels << " channels, " << bits << " bits");
                const WaveFormat format = PcmFormat(44100, channels, bits);
                Open(format);
                ExpectDithered(format, type);
                ExpectDithered(format, type);
                recorder_.Close();
                recorder_.Forget();
            }
        }
        UnloadDriver();
    }
}

}  // namespace
