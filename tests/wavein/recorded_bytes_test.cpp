// dwBytesRecorded when something is amiss, and the position. What a run leaves in its buffers otherwise is
// told in recorded_model_test.cpp.
#include "tests/support/input_test.h"

namespace {

using simulator::Port;
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
    void Settle() { Cards().Advance(1000); }
    void Stop() {
        recorder_.Stop();
        Settle();
    }
    void Reset() {
        recorder_.Reset();
        Settle();
    }
    // Bytes `from` to `to` of what the signal is for the client.
    std::vector<BYTE> Bytes(const WaveFormat& format, const std::vector<simulator::Frame>& signal,
                            size_t from, size_t to) {
        const std::vector<BYTE> all = ClientBytes(format, signal);
        return {all.begin() + static_cast<long>(from), all.begin() + static_cast<long>(to)};
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
    Add(640);
    AdvanceFrames(1000, Rate);
    EXPECT_EQ(recorder_.Counts(), (Sizes{640, 640}));
    std::vector<BYTE> expected = Bytes(Mono(), signal, 0, 640);
    const auto dropped = static_cast<size_t>(Cards().Input(0, Port::Analog).FramesDropped);
    EXPECT_NEAR(static_cast<double>(dropped), 680, 2);
    const auto later = Bytes(Mono(), signal, 640 + 2 * dropped, 1280 + 2 * dropped);
    expected.insert(expected.end(), later.begin(), later.end());
    EXPECT_TRUE(recorder_.Recorded() == expected);
}

TEST_F(RecordedBytesTest, ARefusedBufferComesBackEmpty) {
    const auto signal = PlugIn(2000);
    Open(Mono());
    for (const char* request : {"BEGIN_BUFFER:1", "MAP_BUFFER:1", "SET_BUFFER_COOKIE:1", "QUEUE_BUFFER:1"}) {
        SCOPED_TRACE(request);
        recorder_.Start();
        AddFault(request);
        Add(800);
        Settle();
        Cards().ClearFaults();
        EXPECT_EQ(recorder_.Counts(), Sizes{0});
        Add(800);
        AdvanceFrames(500, Rate);
        EXPECT_EQ(recorder_.Counts(), (Sizes{0, 800}));
        ExpectEachReturnedOnce();
        Reset();
        EXPECT_EQ(recorder_.Close(), MMSYSERR_NOERROR);
        recorder_.Forget();
        Open(Mono());
    }
}

// Whatever the memory held that it would have been recorded into.
TEST_F(RecordedBytesTest, ABufferOfLessThanAWordComesBackEmptyAtOnce) {
    const auto signal = PlugIn(2000);
    Open(Mono());
    recorder_.Start();
    EXPECT_EQ(recorder_.Add(800, 1), MMSYSERR_NOERROR);
    AdvanceFrames(500, Rate);
    EXPECT_EQ(recorder_.Add(3, 1), MMSYSERR_NOERROR);
    Settle();
    EXPECT_EQ(recorder_.Counts(), (Sizes{800, 0}));
    EXPECT_EQ(recorder_.Add(800, 1), MMSYSERR_NOERROR);
    AdvanceFrames(500, Rate);
    EXPECT_EQ(recorder_.Counts(), (Sizes{800, 0, 800}));
}

TEST_F(RecordedBytesTest, ThePositionIsToldInFramesAndBytesOfTheClient) {
    for (const WaveFormat& format :
         {PcmFormat(Rate, 1, 8), PcmFormat(Rate, 2, 16), PcmFormat(Rate, 2, 24), PcmFormat(Rate, 1, 32)}) {
        Open(format);
        EXPECT_EQ(recorder_.Position(), 0u);
        Add(6000);
        Run(100);
        const DWORD position = recorder_.Position();
        EXPECT_NEAR(position, 100, 1);
        EXPECT_EQ(recorder_.Position(TIME_MS), position) << "answered in frames";
        EXPECT_EQ(recorder_.Position(TIME_BYTES), position * format.Get()->nBlockAlign);
        AddFault("GET_POSITION:1");
        EXPECT_EQ(recorder_.Position(), 0xFFFFFFFF) << "an error";
        Stop();
        EXPECT_NEAR(recorder_.Position(), 100, 1) << "the live count, also while stopped";
        Reset();
        recorder_.Start();
        EXPECT_EQ(recorder_.Position(), 0u);
        recorder_.Shut();
        recorder_.Forget();
    }
}

// A card that does not tell where it is has filled what it gives back; of the rest nothing is known.
TEST_F(RecordedBytesTest, WithoutAPositionOnlyFullBuffersCount) {
    const auto signal = PlugIn(2000);
    Open(Mono());
    Add(800, 4);
    recorder_.Start();
    AddFault("GET_POSITION:1");
    AdvanceFrames(450, Rate);
    EXPECT_EQ(recorder_.Counts(), Sizes{800});
    AdvanceFrames(400, Rate);
    EXPECT_EQ(recorder_.Counts(), (Sizes{800, 800}));
    AddFault("GET_POSITION:1");
    AddFault("GET_POSITION:2");
    Stop();
    EXPECT_EQ(recorder_.Counts(), (Sizes{800, 800, 0}));
    EXPECT_TRUE(recorder_.Recorded() == Bytes(Mono(), signal, 0, 1600));
    Reset();
    ExpectEachReturnedOnce();
}

TEST_F(RecordedBytesTest, HeadersThatWillNotDoAreNotTaken) {
    Open(PcmFormat(Rate, 2, 24));
    EXPECT_EQ(recorder_.Add(1000), unsigned{MMSYSERR_INVALPARAM}) << "no whole samples";
    EXPECT_EQ(recorder_.Add(999), MMSYSERR_NOERROR);
    EXPECT_EQ(recorder_.Add(0), unsigned{MMSYSERR_INVALPARAM});
    WAVEHDR header = {};
    char data[12];
    header.lpData = data;
    header.dwBufferLength = sizeof data;
    EXPECT_EQ(recorder_.AddAgain(header), unsigned{WAVERR_UNPREPARED});
    waveInPrepareHeader(recorder_.Handle(), &header, sizeof header);
    EXPECT_EQ(waveInAddBuffer(recorder_.Handle(), &header, sizeof header - 1), unsigned{MMSYSERR_INVALPARAM});
    Reset();
    EXPECT_EQ(recorder_.DoneCount(), 1u);
}

}  // namespace
