// What an input asks of the card, request by request.
#include <algorithm>

#include "tests/clock/clock_script.h"
#include "tests/support/input_test.h"

namespace {

using simulator::Port;

class InputRequestTest : public InputTest {
protected:
    void SetUp() override {
        struct {
            DWORD Size = 68;
            DWORD Codes[8] = {};
            DWORD Gains[8] = {10, 20, 30, 40, 50, 60, 70, 80};
        } const stored;
        StoreBinary(0, TEXT("Monitor"), &stored, sizeof stored);
        Cards().PlugIn(0, Port::Digital, simulator::InputSignal::Run({}));
    }

    // The open from the end of the clock run on.
    Lines OpenLines(UINT device, const WaveFormat& format) {
        waveInGetNumDevs();
        Cards().ClearTrace();
        EXPECT_EQ(recorder_.Open(device, format), MMSYSERR_NOERROR);
        Lines lines = TimedLines(Cards().Trace());
        const auto mono = std::find_if(lines.begin(), lines.end(),
                                       [](const std::string& line) { return line.ends_with("/ 20"); });
        lines.erase(lines.begin(), mono == lines.end() ? mono : mono + 1);
        return lines;
    }
    Lines Requests(MMRESULT (WaveRecorder::*call)()) {
        Cards().ClearTrace();
        EXPECT_EQ((recorder_.*call)(), MMSYSERR_NOERROR);
        return TraceText();
    }
    Lines CloseLines() { return Requests(&WaveRecorder::Close); }
    static Lines Silent(const char* index) {
        return {std::string("write card 3 = ") + index + " / 07", "write card 2 = 00 / FF"};
    }
    static Lines Gain(const char* index, const char* gain) {
        return {std::string("0 write card 3 = ") + index + " / 07",
                std::string("0 write card 2 = ") + gain + " / FF"};
    }
};

const Lines Disarm = {"0 write port 0 = 00 / 02"};
const Lines AudioStatus = {"0 write card 25 = 02 / 02", "0 write card 27 = 00 / 0F", "0 read card 26",
                           "0 write card 26 = 41 / FF", "0 write card 27 = 01 / 0F", "0 read card 26",
                           "0 write card 26 = 00 / FF"};
const Lines ReceiverOn = {"0 write port 1 = 00 / 01", Wait(50000)};
const Lines Opened = {"0 SET_COMPLETION_ROUTINE"};
const Lines Flush = {"FLUSH_BUFFERS"};
const Lines Closed = {"SET_COMPLETION_ROUTINE 0", "RELEASE_CHANNEL"};

TEST_F(InputRequestTest, AnalogInput) {
    EXPECT_EQ(
        OpenLines(AnalogIn, PcmFormat(44100, 2, 16)),
        Disarm + Lines{"0 DISARM_CHANNEL"} + Gain("00", "0A") + Gain("04", "32") + AudioStatus + Opened);
    EXPECT_EQ(CloseLines(), Flush + Silent("00") + Silent("04") + Closed);
}

TEST_F(InputRequestTest, StartsAndStops) {
    Open(PcmFormat(44100, 2, 16));
    Add(4000);
    EXPECT_EQ(Requests(&WaveRecorder::Stop), Lines{}) << "stopped already";
    EXPECT_EQ(Requests(&WaveRecorder::Start), (Lines{"START_TRANSFER", "ARM_CHANNEL"}));
    EXPECT_EQ(Requests(&WaveRecorder::Start), Lines{}) << "running already";
    Cards().Advance(1000);
    EXPECT_EQ(Requests(&WaveRecorder::Stop),
              (Lines{"DISARM_CHANNEL", "GET_POSITION", "GET_POSITION", "STOP_TRANSFER"}));
    EXPECT_EQ(Requests(&WaveRecorder::Reset), Lines{"FLUSH_BUFFERS"});
}

TEST_F(InputRequestTest, DitheredAnalogInput) {
    StoreSetting(0, TEXT("DitherADC"), 2);
    const Lines wholeSlots = {"0 write port 0 = C0 / C0", "0 DISARM_CHANNEL"};
    EXPECT_EQ(OpenLines(AnalogIn, PcmFormat(44100, 1, 8)),
              Disarm + wholeSlots + Gain("00", "0A") + Gain("04", "32") + AudioStatus + Opened);
}

// The receiver is given time, the signal's rate is measured twice.
TEST_F(InputRequestTest, DigitalInput) {
    StoreSetting(0, TEXT("ClockSource"), 0);
    const Lines measure = {"0 write port 1 = 80 / 80", Wait(23), "0 write port 1 = 00 / 80", Wait(4354),
                           "0 read port 2"};
    EXPECT_EQ(OpenLines(DigitalIn, PcmFormat(44100, 2, 16)),
              Disarm + ReceiverOn + measure + measure + Lines{"0 DISARM_CHANNEL"} + Gain("01", "14") +
                  Gain("05", "3C") + AudioStatus + Opened);
    EXPECT_EQ(CloseLines(), Flush + Silent("01") + Silent("05") + Lines{"write port 1 = 01 / 01"} + Closed);
}

TEST_F(InputRequestTest, AReceiverThatIsTheClockStaysOn) {
    StoreSetting(0, TEXT("ClockSource"), 64);
    Cards().SetDigitalInputRate(0, 44100);
    EXPECT_EQ(OpenLines(DigitalIn, PcmFormat(44100, 2, 16)), Disarm + ReceiverOn + Lines{"0 DISARM_CHANNEL"} +
                                                                 Gain("01", "14") + Gain("05", "3C") +
                                                                 AudioStatus + Opened);
    EXPECT_EQ(CloseLines(), Flush + Silent("01") + Silent("05") + Closed);
}

TEST_F(InputRequestTest, GainsThatAreDownAreNotWritten) {
    const DWORD stored[17] = {68};
    StoreBinary(0, TEXT("Monitor"), stored, sizeof stored);
    EXPECT_EQ(OpenLines(AnalogIn, PcmFormat(44100, 2, 16)), Disarm + Lines{"0 DISARM_CHANNEL"} + Opened);
    EXPECT_EQ(CloseLines(), Flush + Closed);
}

// --- the rate of the incoming signal -----------------------------------------------------------

constexpr DWORD InputRateEvent = 0x40070003;

class InputRateTest : public InputTest {
protected:
    void Expect(DWORD rate, MMRESULT result) {
        const size_t events = test_system::EventLog().size();
        EXPECT_EQ(recorder_.Open(DigitalIn, PcmFormat(rate, 2, 16)), result);
        const auto log = test_system::EventLog();
        ASSERT_EQ(log.size(), events + (result == MMSYSERR_NOERROR ? 0 : 1));
        if (result != MMSYSERR_NOERROR) {
            EXPECT_EQ(log.back().Id, InputRateEvent);
            EXPECT_EQ(log.back().Type, EVENTLOG_WARNING_TYPE);
            EXPECT_EQ(log.back().Source, u"KESTVOX.DLL");
            EXPECT_FALSE(Cards().ChannelClaimed(0, 1));
            EXPECT_EQ(Cards().OpenFiles(), 0u);
            EXPECT_EQ(Cards().InputRegister(0, Port::Digital, 1) & 1, 1) << "the receiver is off again";
        } else {
            EXPECT_EQ(recorder_.Close(), MMSYSERR_NOERROR);
        }
    }
    void SetUp() override { StoreSetting(0, TEXT("ClockSource"), 0); }
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
}

TEST_F(InputRateTest, ASettingLeavesItUnchecked) {
    StoreSetting(0, TEXT("CheckClocks"), 0);
    Expect(44100, MMSYSERR_NOERROR);
    EXPECT_EQ(recorder_.Open(AnalogIn, PcmFormat(44100, 2, 16)), MMSYSERR_NOERROR);
}

class CabledInputTest : public InputTest {
protected:
    CabledInputTest() : InputTest(2) {}
};

// A transmitter that is on sends a clock, whether or not its output is open.
TEST_F(CabledInputTest, OpensBeforeTheOutputDoes) {
    waveInGetNumDevs();
    for (const unsigned sender : {1u, 0u}) {
        Cards().PlugIn(0, Port::Digital, simulator::InputSignal::Cable(sender, Port::Digital));
        EXPECT_EQ(recorder_.Open(DigitalIn, PcmFormat(44100, 2, 16)), MMSYSERR_NOERROR)
            << "from card " << sender;
        recorder_.Shut();
    }
}

TEST_F(InputRateTest, AReadingThatFailsIsNoReading) {
    Cards().SetDigitalInputRate(0, 32000);
    Expect(44100, MMSYSERR_ERROR);
    // Of the second measurement; the first one does not count.
    Cards().ClearTrace();
    Expect(44100, MMSYSERR_ERROR);
    const Lines lines = TraceText();
    const long reads = std::count_if(lines.begin(), lines.end(),
                                     [](const std::string& line) { return line.starts_with("read"); });
    AddFault("READ_REGISTER:" + std::to_string(reads));
    Expect(44100, MMSYSERR_NOERROR);
}

}  // namespace
