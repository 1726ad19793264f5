// What an input asks of the card, request by request.
#include <algorithm>

#include "tests/clock/clock_script.h"
#include "tests/support/input_test.h"

namespace {

class InputRequestTest : public InputTest {
protected:
    void SetUp() override {
        StoreMonitor({}, {10, 20, 30, 40, 50, 60, 70, 80});
        Cards().PlugIn(0, Port::Digital, simulator::InputSignal::Run({}));
    }

    // The open from the end of the clock run on.
    Lines OpenLines(UINT device, const WaveFormat& format) {
        waveInGetNumDevs();
        Cards().ClearTrace();
        EXPECT_EQ(recorder_.Open(device, format), MMSYSERR_NOERROR);
        const Lines lines = TimedLines(Cards().Trace());
        const auto mono = std::find(lines.begin(), lines.end(), "0 write port 0 = 00 / 20");
        return {mono == lines.end() ? mono : mono + 1, lines.end()};
    }
    Lines Requests(MMRESULT (WaveRecorder::*call)()) {
        Cards().ClearTrace();
        EXPECT_EQ((recorder_.*call)(), MMSYSERR_NOERROR);
        return TraceText();
    }
    static Lines Gain(const std::string& index, const std::string& gain) {
        return {"write card 3 = " + index + " / 07", "write card 2 = " + gain + " / FF"};
    }
};

const Lines AudioStatus = Lines{"write card 25 = 02 / 02"} + StatusByte(0, 0x41) + StatusByte(1, 0);
const Lines Closed = {"SET_COMPLETION_ROUTINE 0", "RELEASE_CHANNEL"};

TEST_F(InputRequestTest, AnalogInput) {
    EXPECT_EQ(OpenLines(AnalogIn, PcmFormat(44100, 2, 16)),
              LinesOf("0 ", Lines{"write port 0 = 00 / 02", "DISARM_CHANNEL"} + Gain("00", "0A") +
                                Gain("04", "32") + AudioStatus + Lines{"SET_COMPLETION_ROUTINE"}));
    EXPECT_EQ(Requests(&WaveRecorder::Stop), Lines{}) << "stopped already";
    Add(4000);
    EXPECT_EQ(Requests(&WaveRecorder::Start), (Lines{"START_TRANSFER", "ARM_CHANNEL"}));
    EXPECT_EQ(Requests(&WaveRecorder::Start), Lines{}) << "running already";
    Cards().Advance(1000);
    EXPECT_EQ(Requests(&WaveRecorder::Stop),
              (Lines{"DISARM_CHANNEL", "GET_POSITION", "GET_POSITION", "STOP_TRANSFER"}));
    EXPECT_EQ(Requests(&WaveRecorder::Reset), Lines{"FLUSH_BUFFERS"});
    EXPECT_EQ(Requests(&WaveRecorder::Close),
              Lines{"FLUSH_BUFFERS"} + Gain("00", "00") + Gain("04", "00") + Closed);
}

// Four buffers are in the card. The one that a stop brings back is followed by the next, and its transfer is
// started in any case.
TEST_F(InputRequestTest, ARefillAfterAStop) {
    WaveFormat format = PcmFormat(44100, 1, 16);
    format.Basic().nAvgBytesPerSec = 0;
    Open(format);
    Add(400, 5);
    EXPECT_EQ(recorder_.Start(), MMSYSERR_NOERROR);
    Cards().Advance(1000);
    Cards().ClearTrace();
    EXPECT_EQ(recorder_.Stop(), MMSYSERR_NOERROR);
    Cards().Advance(1000);
    EXPECT_EQ(recorder_.DoneCount(), 1u);
    EXPECT_EQ(TraceText().back(), "START_TRANSFER");
}

// The receiver is given time, and the signal's rate is measured twice. A signal that is the card's clock is
// not measured, and its receiver stays on.
TEST_F(InputRequestTest, DigitalInput) {
    const Lines measure = {"write port 1 = 80 / 80", Wait(23), "write port 1 = 00 / 80", Wait(4354),
                           "read port 2"};
    for (const DWORD source : {0u, 64u}) {
        SCOPED_TRACE(source);
        StoreSetting(0, TEXT("ClockSource"), source);
        Cards().SetDigitalInputRate(0, 44100);
        const Lines check = source == 0 ? measure + measure : Lines{};
        const Lines off = source == 0 ? Lines{"write port 1 = 01 / 01"} : Lines{};
        EXPECT_EQ(OpenLines(DigitalIn, PcmFormat(44100, 2, 16)),
                  LinesOf("0 ", Lines{"write port 0 = 00 / 02", "write port 1 = 00 / 01", Wait(50000)} +
                                    check + Lines{"DISARM_CHANNEL"} + Gain("01", "14") + Gain("05", "3C") +
                                    AudioStatus + Lines{"SET_COMPLETION_ROUTINE"}));
        EXPECT_EQ(Requests(&WaveRecorder::Close),
                  Lines{"FLUSH_BUFFERS"} + Gain("01", "00") + Gain("05", "00") + off + Closed);
        UnloadDriver();
    }
}

TEST_F(InputRequestTest, GainsThatAreDownAreNotWritten) {
    StoreMonitor({}, {});
    EXPECT_EQ(OpenLines(AnalogIn, PcmFormat(44100, 2, 16)),
              (Lines{"0 write port 0 = 00 / 02", "0 DISARM_CHANNEL", "0 SET_COMPLETION_ROUTINE"}));
    EXPECT_EQ(Requests(&WaveRecorder::Close), Lines{"FLUSH_BUFFERS"} + Closed);
}

// --- the rate of the incoming signal -----------------------------------------------------------

constexpr DWORD InputRateEvent = 0x40070003;

class InputRateTest : public InputTest {
protected:
    void Expect(DWORD rate, MMRESULT result) {
        refused_ += result == MMSYSERR_NOERROR ? 0 : 1;
        EXPECT_EQ(recorder_.Open(DigitalIn, PcmFormat(rate, 2, 16)), result);
        EXPECT_EQ(Events(), std::vector<DWORD>(refused_, InputRateEvent));
        if (result != MMSYSERR_NOERROR) {
            EXPECT_FALSE(Cards().ChannelClaimed(0, 1));
            EXPECT_EQ(Cards().OpenFiles(), 0u);
            EXPECT_EQ(Cards().InputRegister(0, Port::Digital, 1) & 1, 1) << "the receiver is off again";
        } else {
            EXPECT_EQ(recorder_.Close(), MMSYSERR_NOERROR);
        }
    }
    void SetUp() override { StoreSetting(0, TEXT("ClockSource"), 0); }

    size_t refused_ = 0;
};

TEST_F(InputRateTest, EachRateAgainstEach) {
    for (const DWORD incoming : {0u, 96000u, 88200u, 48000u, 44100u, 32000u}) {  // 0: nothing is plugged in
        if (incoming != 0) {
            Cards().SetDigitalInputRate(0, incoming);
        }
        for (const DWORD rate : {96000u, 88200u, 48000u, 44100u, 32000u, 22050u, 11025u, 8000u}) {
            SCOPED_TRACE(testing::Message() << incoming << " recorded at " << rate);
            const bool slow = rate < 32000 && incoming != 0;
            Expect(rate, incoming == rate || slow ? MMSYSERR_NOERROR : MMSYSERR_ERROR);
        }
    }
    UnloadDriver();
    StoreSetting(0, TEXT("CheckClocks"), 0);
    Expect(96000, MMSYSERR_NOERROR);
}

}  // namespace
