// dwBytesRecorded: how much of a buffer is sound, whatever happened meanwhile.
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

TEST_F(RecordedBytesTest, AStopGivesBackWhatIsBegunInWholeUnits) {
    const auto signal = PlugIn(2000);
    Open(Mono());
    Add(800, 4);
    Run(1000);
    EXPECT_EQ(recorder_.Counts(), (Sizes{800, 800}));
    Stop();
    EXPECT_NEAR(recorder_.Position(), 1000, 1);
    EXPECT_EQ(recorder_.Counts(), (Sizes{800, 800, 992 * 2 - 1600}));
    EXPECT_TRUE(recorder_.Recorded() == Bytes(Mono(), signal, 0, 992 * 2));
    Reset();
    EXPECT_EQ(recorder_.Counts(), (Sizes{800, 800, 384, 0}));
    ExpectEachReturnedOnce();
}

struct StopCase {
    WaveFormat Format;
    size_t Size;
    unsigned Unit;  // frames
    const char* Dither = nullptr;
};

// The bytes between a start and a stop are the stop position in the client's layout.
TEST_F(RecordedBytesTest, TheSumIsTheStopPosition) {
    const StopCase cases[] = {
        {PcmFormat(Rate, 1, 8), 300, 32},    {PcmFormat(Rate, 2, 8), 300, 16},
        {PcmFormat(Rate, 1, 16), 300, 16},   {PcmFormat(Rate, 2, 16), 300, 8},
        {PcmFormat(Rate, 1, 24), 330, 8},    {PcmFormat(Rate, 2, 24), 330, 4},
        {PcmFormat(Rate, 1, 32), 404, 8},    {PcmFormat(Rate, 2, 32), 404, 4},
        {PcmFormat(Rate, 2, 24, 4), 404, 4},
    };
    for (const DWORD dither : {0u, 1u}) {
        StoreSetting(0, TEXT("DitherADC"), dither);
        for (const StopCase& test : cases) {
            for (const unsigned misalignment : {0u, 1u, 2u}) {
                const WAVEFORMATEX& format = test.Format;
                SCOPED_TRACE(testing::Message() << format.wBitsPerSample << " bits of " << format.nBlockAlign
                                                << ", dither " << dither << ", +" << misalignment);
                Open(test.Format);
                Add(test.Size, 40, misalignment);
                for (const unsigned frames : {500u, 7u, 779u}) {
                    const size_t before = recorder_.Recorded().size();
                    const auto signal = PlugIn(1000);
                    Run(frames);
                    Stop();
                    const DWORD position = recorder_.Position() / test.Unit * test.Unit;
                    EXPECT_NEAR(position, DWORD{frames / test.Unit * test.Unit}, test.Unit);
                    const std::vector<BYTE> all = recorder_.Recorded();
                    ASSERT_EQ(all.size() - before, position * format.nBlockAlign) << frames;
                    if (dither == 0) {
                        EXPECT_TRUE(std::equal(all.begin() + static_cast<long>(before), all.end(),
                                               ClientBytes(format, signal).begin()));
                    }
                }
                Reset();
                ExpectEachReturnedOnce();
                EXPECT_TRUE(recorder_.GuardsIntact());
                EXPECT_EQ(recorder_.Close(), MMSYSERR_NOERROR);
                recorder_.Forget();
            }
        }
        UnloadDriver();
    }
}

// A packed buffer may end between two units: it is full, although the stop does not count so far.
TEST_F(RecordedBytesTest, AFullBufferBeyondTheLastUnitStaysFull) {
    const WaveFormat format = PcmFormat(Rate, 1, 24);
    std::vector<BYTE> expected = Bytes(format, PlugIn(2000), 0, 333);
    Open(format);
    Add(333, 3);
    Run(112);
    Stop();
    ASSERT_EQ(recorder_.Position(), 111u);
    EXPECT_EQ(recorder_.Counts(), Sizes{333});
    const std::vector<BYTE> rest = Bytes(format, PlugIn(2000), 0, 666);
    expected.insert(expected.end(), rest.begin(), rest.end());
    Run(300);
    EXPECT_EQ(recorder_.Counts(), (Sizes{333, 333, 333}));
    EXPECT_TRUE(recorder_.Recorded() == expected);
    ExpectEachReturnedOnce();
}

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

TEST_F(RecordedBytesTest, AResetWhileRunningGivesBackWhatWasRecorded) {
    for (const unsigned misalignment : {0u, 2u}) {
        const auto signal = PlugIn(2000);
        Open(Mono());
        Add(800, 9, misalignment);
        Run(1000);
        EXPECT_EQ(recorder_.Close(), unsigned{WAVERR_STILLPLAYING});
        Reset();
        EXPECT_EQ(recorder_.Counts(), (Sizes{800, 800, 384, 0, 0, 0, 0, 0, 0}));
        EXPECT_TRUE(recorder_.Recorded() == Bytes(Mono(), signal, 0, 992 * 2));
        ExpectEachReturnedOnce();
        // Nothing of it is counted in the next recording.
        const auto next = PlugIn(2000);
        const size_t before = recorder_.Recorded().size();
        Add(800, 2, misalignment);
        Run(100);
        Reset();
        const std::vector<BYTE> all = recorder_.Recorded();
        EXPECT_EQ(std::vector<BYTE>(all.begin() + static_cast<long>(before), all.end()),
                  Bytes(Mono(), next, 0, 192));
        ExpectEachReturnedOnce();
        EXPECT_EQ(recorder_.Close(), MMSYSERR_NOERROR);
        recorder_.Forget();
    }
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
    const StopCase cases[] = {
        {PcmFormat(Rate, 1, 8), 4000, 1},
        {PcmFormat(Rate, 2, 16), 4000, 4},
        {PcmFormat(Rate, 2, 24), 6000, 6},
        {PcmFormat(Rate, 1, 32), 4000, 4},
    };
    for (const StopCase& test : cases) {
        Open(test.Format);
        EXPECT_EQ(recorder_.Position(), 0u);
        Add(test.Size);
        Run(100);
        const DWORD position = recorder_.Position();
        EXPECT_NEAR(position, 100, 1);
        EXPECT_EQ(recorder_.Position(TIME_MS), position) << "answered in frames";
        EXPECT_EQ(recorder_.Position(TIME_BYTES), position * test.Format.Get()->nBlockAlign);
        MMTIME time = {};
        time.wType = TIME_MS;
        EXPECT_EQ(waveInGetPosition(recorder_.Handle(), &time, sizeof time), MMSYSERR_NOERROR);
        EXPECT_EQ(time.wType, unsigned{TIME_SAMPLES});
        AddFault("GET_POSITION:1");
        EXPECT_EQ(waveInGetPosition(recorder_.Handle(), &time, sizeof time), unsigned{MMSYSERR_ERROR});
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
