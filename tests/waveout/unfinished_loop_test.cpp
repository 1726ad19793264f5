// A loop whose end was refused: what is written after it comes back, and its client may free it, while the
// beginning still expects passes.
#include <algorithm>
#include <cstring>

#include "tests/support/output_test.h"

namespace {

constexpr DWORD Begin = WHDR_BEGINLOOP;
constexpr DWORD End = WHDR_ENDLOOP;
constexpr DWORD Bytes = 600;  // 100 frames of 24-bit stereo

enum class Refusal { Length, Memory };
enum class Then { Break, AnotherEnd, AnotherLoop, Reset };

class UnfinishedLoopTest : public OutputTest {
protected:
    void Open() {
        ASSERT_EQ(waveOutOpen(&handle_, AnalogOut, PcmFormat(44100, 2, 24).Get(),
                              reinterpret_cast<DWORD_PTR>(&UnfinishedLoopTest::Receive),
                              reinterpret_cast<DWORD_PTR>(this), CALLBACK_FUNCTION),
                  MMSYSERR_NOERROR);
    }
    void Close() {
        EXPECT_EQ(waveOutReset(handle_), MMSYSERR_NOERROR);
        EXPECT_EQ(waveOutClose(handle_), MMSYSERR_NOERROR);
        for (size_t i = 0; i < buffers_.size(); ++i) {
            EXPECT_EQ(buffers_[i].Done, 1u) << "buffer " << i;
        }
        EXPECT_EQ(strangers_, 0u) << "headers that the driver does not have";
        buffers_.clear();
    }

    // A buffer in a page of its own, which is freed as soon as the driver does not have it any more.
    void Write(DWORD flags = 0, DWORD loops = 0) {
        buffers_.push_back({NewHeader(Bytes, flags, loops), 0});
        EXPECT_EQ(waveOutWrite(handle_, buffers_.back().Header, sizeof(WAVEHDR)), MMSYSERR_NOERROR);
    }
    void WriteRefused(Refusal refusal, DWORD flags) {
        const bool length = refusal == Refusal::Length;
        WAVEHDR* header = NewHeader(length ? Bytes + 1 : Bytes, flags, 0);
        if (!length) {
            test_system::FailCall("GlobalAlloc", 1);
        }
        EXPECT_EQ(waveOutWrite(handle_, header, sizeof *header),
                  length ? unsigned{MMSYSERR_INVALPARAM} : unsigned{MMSYSERR_NOMEM});
        test_system::GiveBackPage(header);
    }
    unsigned Done(size_t index) const { return buffers_[index].Done; }

    HWAVEOUT handle_ = nullptr;

private:
    struct Buffer {
        WAVEHDR* Header;
        unsigned Done;
    };

    WAVEHDR* NewHeader(DWORD bytes, DWORD flags, DWORD loops) {
        auto* header = static_cast<WAVEHDR*>(test_system::TakePage());
        *header = {};
        header->lpData = reinterpret_cast<LPSTR>(header + 1);
        header->dwBufferLength = bytes;
        memset(header->lpData, 0x11, bytes);
        waveOutPrepareHeader(handle_, header, sizeof *header);
        header->dwFlags |= flags;
        header->dwLoops = loops;
        return header;
    }

    static void CALLBACK Receive(HWAVEOUT, UINT message, DWORD_PTR instance, DWORD_PTR header, DWORD_PTR) {
        if (message == WOM_DONE) {
            reinterpret_cast<UnfinishedLoopTest*>(instance)->TakeBack(reinterpret_cast<WAVEHDR*>(header));
        }
    }
    // A page may have been given out again, so that the newest with its address counts.
    void TakeBack(WAVEHDR* header) {
        const auto found = std::find_if(buffers_.rbegin(), buffers_.rend(),
                                        [header](const Buffer& buffer) { return buffer.Header == header; });
        if (found == buffers_.rend() || ++found->Done != 1) {
            ++strangers_;
            return;
        }
        test_system::GiveBackPage(header);
    }

    std::vector<Buffer> buffers_;  // accepted ones
    unsigned strangers_ = 0;
};

TEST_F(UnfinishedLoopTest, ReturnedHeadersAreNotTouchedAgain) {
    for (const Refusal refusal : {Refusal::Length, Refusal::Memory}) {
        for (const Then then : {Then::Break, Then::AnotherEnd, Then::AnotherLoop, Then::Reset}) {
            SCOPED_TRACE(testing::Message() << static_cast<int>(refusal) << ", " << static_cast<int>(then));
            Open();
            Write(Begin, 3);
            WriteRefused(refusal, End);
            Write();
            Write();
            Cards().Advance(Second);
            EXPECT_EQ(Done(0), 0u) << "it expects two more passes";
            EXPECT_EQ(Done(1) + Done(2), 2u);
            if (then == Then::AnotherEnd) {
                Write(End);
                Write();
            } else if (then == Then::AnotherLoop) {
                Write(Begin, 2);
                Write(End);
            }
            Cards().Advance(Second);
            if (then != Then::Reset) {
                EXPECT_EQ(waveOutBreakLoop(handle_), MMSYSERR_NOERROR);
                Write();
                Cards().Advance(Second);
            }
            Close();
        }
    }
}

}  // namespace
