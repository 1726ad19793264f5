// A loop whose end was refused: what is written after it comes back, and its client may free it, while the
// beginning still expects passes.
#include <mutex>
#include <set>

#include "tests/support/output_test.h"

namespace {

constexpr DWORD Begin = WHDR_BEGINLOOP;
constexpr DWORD End = WHDR_ENDLOOP;
constexpr size_t Frames = 100;
constexpr DWORD Bytes = Frames * 6;  // of 24-bit stereo

enum class Then { Break, AnotherEnd, AnotherLoop, Reset };

class UnfinishedLoopTest : public OutputTest {
protected:
    // Claims no byte rate, so that exactly four buffers are in the card.
    void Open() {
        WaveFormat format = PcmFormat(44100, 2, 24);
        format.Basic().nAvgBytesPerSec = 0;
        ASSERT_EQ(waveOutOpen(&device_, AnalogOut, format.Get(),
                              reinterpret_cast<DWORD_PTR>(&UnfinishedLoopTest::Receive),
                              reinterpret_cast<DWORD_PTR>(this), CALLBACK_FUNCTION),
                  MMSYSERR_NOERROR);
    }
    void Close() {
        EXPECT_EQ(waveOutReset(device_), MMSYSERR_NOERROR);
        EXPECT_EQ(waveOutClose(device_), MMSYSERR_NOERROR);
        EXPECT_EQ(Held(), std::set<WAVEHDR*>{}) << "did not come back";
    }

    std::set<WAVEHDR*> Held() {  // by the driver
        std::lock_guard lock(mutex_);
        return held_;
    }

    void Write(DWORD flags = 0, DWORD loops = 0) {
        WAVEHDR* header = test_system::TakeHeader(Bytes);
        header->dwFlags |= flags;
        header->dwLoops = loops;
        {
            std::lock_guard lock(mutex_);
            held_.insert(header);
        }
        EXPECT_EQ(waveOutWrite(device_, header, sizeof *header), MMSYSERR_NOERROR);
    }
    void WriteRefused(DWORD flags, DWORD loops = 0) {
        WAVEHDR* header = test_system::TakeHeader(Bytes + 1);
        header->dwFlags |= flags;
        header->dwLoops = loops;
        EXPECT_EQ(waveOutWrite(device_, header, sizeof *header), unsigned{MMSYSERR_INVALPARAM});
        test_system::GiveBackPage(header);
    }

    HWAVEOUT device_ = nullptr;

private:
    static void CALLBACK Receive(HWAVEOUT, UINT message, DWORD_PTR self, DWORD_PTR param, DWORD_PTR) {
        if (message == WOM_DONE) {
            reinterpret_cast<UnfinishedLoopTest*>(self)->TakeBack(reinterpret_cast<WAVEHDR*>(param));
        }
    }
    // The page is freed as soon as the driver does not have the header any more. A thread that resets and the
    // driver's own may return headers at the same time.
    void TakeBack(WAVEHDR* header) {
        {
            std::lock_guard lock(mutex_);
            ASSERT_EQ(held_.erase(header), 1u) << "the driver does not have it";
        }
        test_system::GiveBackPage(header);
    }

    std::mutex mutex_;
    std::set<WAVEHDR*> held_;
};

TEST_F(UnfinishedLoopTest, ReturnedHeadersAreNotTouchedAgain) {
    for (const Then then : {Then::Break, Then::AnotherEnd, Then::AnotherLoop, Then::Reset}) {
        SCOPED_TRACE(static_cast<int>(then));
        Open();
        Write(Begin, 3);
        WAVEHDR* const beginning = *Held().begin();
        WriteRefused(End);
        Write();
        Write();
        Cards().Advance(Second);
        EXPECT_EQ(Held(), std::set<WAVEHDR*>{beginning}) << "it expects two more passes";
        if (then == Then::AnotherEnd) {
            Write(End);
            Write();
        } else if (then == Then::AnotherLoop) {
            Write(Begin, 2);
            Write(End);
        }
        Cards().Advance(Second);
        if (then != Then::Reset) {
            EXPECT_EQ(waveOutBreakLoop(device_), MMSYSERR_NOERROR);
            Write();
            Cards().Advance(Second);
        }
        Close();
    }
}

// The loop does not end, and so what expects no pass, or fewer, may come back while it is queued once more.
TEST_F(UnfinishedLoopTest, ReturnedHeadersLeaveTheQueue) {
    Open();
    Write(Begin, 3);
    Write();
    Write();
    WriteRefused(End);
    Write(End);
    Cards().Advance(Second);
    EXPECT_EQ(Held().size(), 3u);
    Close();
    for (const Then then : {Then::Break, Then::Reset}) {
        SCOPED_TRACE(static_cast<int>(then));
        Open();
        Cards().ForgetAudio();
        Write(Begin, 10);
        WriteRefused(End);
        for (int i = 0; i < 3; ++i) {
            Write();
        }
        Write(Begin, 2);  // waits with what follows it
        Write(End);
        Write();
        EXPECT_EQ(Held().size(), 7u);
        EXPECT_EQ(then == Then::Break ? waveOutBreakLoop(device_) : waveOutReset(device_), MMSYSERR_NOERROR);
        Cards().Advance(Second);
        EXPECT_EQ(Held(), std::set<WAVEHDR*>{}) << "did not come back";
        if (then == Then::Break) {
            EXPECT_EQ(Played().size(), 7 * Frames) << "what has waited is played once";
        }
        Close();
    }
}

// Passes that belong to no loop: its beginning was refused.
TEST_F(UnfinishedLoopTest, AResetBringsEverythingBackHoweverLateTheCardIs) {
    AddFault("completion:all:late=50000");
    Open();
    WriteRefused(Begin, 3);
    Write();
    EXPECT_EQ(waveOutReset(device_), MMSYSERR_NOERROR);
    Cards().Advance(Second);
    EXPECT_EQ(Held(), std::set<WAVEHDR*>{});
    Close();
}

}  // namespace
