// What the card hears arrives in the client's buffers, sample for sample.
#include "convert/capture.h"
#include "tests/support/input_test.h"

namespace {

using simulator::Frame;
using simulator::Port;

const WaveFormat Plain[] = {
    PcmFormat(44100, 1, 8),
    PcmFormat(44100, 2, 8),
    PcmFormat(44100, 1, 16),
    PcmFormat(44100, 2, 16),
    PcmFormat(44100, 2, 20),
    PcmFormat(44100, 1, 24),
    PcmFormat(44100, 2, 24),
    PcmFormat(44100, 2, 20, 4),
    PcmFormat(44100, 1, 24, 4),
    PcmFormat(44100, 1, 32),
    PcmFormat(44100, 2, 32),
    ExtensibleFormat(44100, 2, 16, 12),
    ExtensibleFormat(44100, 2, 24, 24),
    ExtensibleFormat(44100, 2, 32, 24),
};

bool IsPacked(const WAVEFORMATEX& format) {
    return format.nBlockAlign == 3 * format.nChannels;
}

class RecordingTest : public InputTest {
protected:
    // Records into buffers of these sizes until they are full: what came back is the signal from its
    // first frame on, without a gap or a repetition.
    void ExpectSignal(UINT device, const WaveFormat& format, const std::vector<size_t>& sizes,
                      unsigned misalignment, Justified side = Justified::Left) {
        const WAVEFORMATEX& basic = format;
        SCOPED_TRACE(testing::Message() << "device " << device << ", tag " << basic.wFormatTag << ", "
                                        << basic.nChannels << " channels, " << basic.wBitsPerSample
                                        << " bits at " << basic.nSamplesPerSec << ", +" << misalignment);
        const std::vector<BYTE> expected = ClientBytes(format, PlugIn(3000, static_cast<Port>(device)), side);
        Open(format, device);
        std::vector<DWORD> counts;
        DWORD total = 0;
        for (const size_t size : sizes) {
            ASSERT_EQ(recorder_.Add(size, misalignment), MMSYSERR_NOERROR);
            counts.push_back(static_cast<DWORD>(IsPacked(format) ? size : size / 4 * 4));
            total += counts.back();
        }
        ASSERT_LE(total, expected.size());
        EXPECT_EQ(recorder_.Start(), MMSYSERR_NOERROR);
        Cards().Advance(Second / 2);
        EXPECT_EQ(recorder_.Counts(), counts);
        EXPECT_TRUE(recorder_.Recorded() == std::vector<BYTE>(expected.begin(), expected.begin() + total));
        ExpectEachReturnedOnce();
        EXPECT_TRUE(recorder_.GuardsIntact());
        EXPECT_EQ(recorder_.Stop(), MMSYSERR_NOERROR);
        EXPECT_EQ(recorder_.Close(), MMSYSERR_NOERROR);
        recorder_.Forget();
    }
};

// Buffer ends fall inside frames, and lengths are not whole words except where a sample has three bytes.
TEST_F(RecordingTest, EveryFormatIsExactOnBothPorts) {
    for (const UINT device : {AnalogIn, DigitalIn}) {
        for (const WaveFormat& format : Plain) {
            for (unsigned misalignment = 0; misalignment < 4; ++misalignment) {
                ExpectSignal(device, format,
                             IsPacked(format) ? std::vector<size_t>{999, 3, 600, 12, 33, 300}
                                              : std::vector<size_t>{1001, 4, 602, 15, 36, 300},
                             misalignment);
            }
        }
    }
}

TEST_F(RecordingTest, SlotsAreRightJustifiedByASetting) {
    StoreSetting(0, TEXT("Left24"), 0);
    const Justified right = Justified::Right;
    ExpectSignal(AnalogIn, PcmFormat(44100, 1, 20, 4), {400, 40}, 0, right);
    ExpectSignal(DigitalIn, PcmFormat(44100, 2, 24, 4), {400, 40}, 1, right);
    ExpectSignal(AnalogIn, PcmFormat(44100, 2, 32), {400, 40}, 0, right);
    ExpectSignal(AnalogIn, PcmFormat(44100, 2, 24), {600, 60}, 0);
    ExpectSignal(AnalogIn, ExtensibleFormat(44100, 2, 32, 20), {400, 40}, 0);
}

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

class DitheredRecordingTest : public RecordingTest {
protected:
    // Sizes are whole frames and whole words.
    void Record(const WaveFormat& format, DWORD type) {
        SCOPED_TRACE(testing::Message() << "type " << type << ", " << format.Get()->nChannels << " channels, "
                                        << format.Get()->wBitsPerSample << " bits");
        const std::vector<BYTE> expected = Dithered(format, PlugIn(3000), type);
        size_t total = 0;
        for (const size_t size : {800u, 4u, 404u, 1000u}) {
            Add(size, 1, static_cast<unsigned>(total) & 2);
            total += size;
        }
        recorder_.Start();
        Cards().Advance(Second / 10);
        EXPECT_TRUE(recorder_.Recorded() ==
                    std::vector<BYTE>(expected.begin(), expected.begin() + static_cast<long>(total)));
        ExpectEachReturnedOnce();
    }
};

TEST_F(DitheredRecordingTest, BufferBoundariesAreNotHeard) {
    for (DWORD type = 1; type <= 4; ++type) {
        StoreSetting(0, TEXT("DitherADC"), type);
        for (const WORD bits : {WORD{8}, WORD{16}}) {
            for (const WORD channels : {WORD{1}, WORD{2}}) {
                const WaveFormat format = PcmFormat(44100, channels, bits);
                Open(format);
                Record(format, type);
                recorder_.Reset();
                recorder_.Close();
                recorder_.Forget();
            }
        }
        UnloadDriver();
    }
}

TEST_F(DitheredRecordingTest, AResetBeginsTheRandomSequenceAgain) {
    StoreSetting(0, TEXT("DitherADC"), 4);
    const WaveFormat format = PcmFormat(44100, 2, 16);
    Open(format);
    Record(format, 4);
    recorder_.Reset();
    const size_t before = recorder_.Recorded().size();
    const std::vector<BYTE> expected = Dithered(format, PlugIn(1000), 4);
    Add(2000);
    recorder_.Start();
    Cards().Advance(Second / 10);
    const std::vector<BYTE> all = recorder_.Recorded();
    ASSERT_EQ(all.size(), before + 2000);
    EXPECT_TRUE(std::equal(all.begin() + static_cast<long>(before), all.end(), expected.begin()));
}

TEST_F(DitheredRecordingTest, TheBufferOfAnOddLengthIsFilledToItsLastWord) {
    StoreSetting(0, TEXT("DitherADC"), 1);
    const WaveFormat format = PcmFormat(44100, 1, 8);
    const std::vector<BYTE> expected = Dithered(format, PlugIn(2000), 1);
    Open(format);
    Cards().ClearTrace();
    Add(1001);
    EXPECT_EQ(TraceText({"SET_"}),
              (std::vector<std::string>{"BEGIN_BUFFER", "MAP_BUFFER 4004", "QUEUE_BUFFER 0"}));
    recorder_.Start();
    Cards().Advance(Second / 10);
    EXPECT_EQ(recorder_.Recorded(), std::vector<BYTE>(expected.begin(), expected.begin() + 1000));
}

}  // namespace
