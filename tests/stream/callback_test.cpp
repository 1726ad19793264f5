// The ways in which a client wants to be told.
#include "tests/support/output_test.h"

namespace {

class CallbackTest : public OutputTest {
protected:
    HWAVEOUT Open(DWORD_PTR target, DWORD type) {
        HWAVEOUT handle = nullptr;
        EXPECT_EQ(waveOutOpen(&handle, AnalogOut, PcmFormat(44100, 2, 16).Get(), target, 0, type),
                  MMSYSERR_NOERROR);
        return handle;
    }
    void Play(HWAVEOUT handle) {
        EXPECT_EQ(waveOutPrepareHeader(handle, &header_, sizeof header_), MMSYSERR_NOERROR);
        EXPECT_EQ(waveOutWrite(handle, &header_, sizeof header_), MMSYSERR_NOERROR);
        Cards().Advance(Second);
        EXPECT_EQ(waveOutUnprepareHeader(handle, &header_, sizeof header_), MMSYSERR_NOERROR);
        EXPECT_EQ(header_.dwFlags, unsigned{WHDR_DONE});
    }

    std::vector<BYTE> data_ = Pattern(4000);
    WAVEHDR header_ = {reinterpret_cast<LPSTR>(data_.data()), 4000, 0, 0, 0, 0, nullptr, 0};
};

TEST_F(CallbackTest, Event) {
    const HANDLE event = CreateEventW(nullptr, FALSE, FALSE, nullptr);
    const auto signalled = [event] { return WaitForSingleObject(event, 0) == WAIT_OBJECT_0; };
    const HWAVEOUT handle = Open(reinterpret_cast<DWORD_PTR>(event), CALLBACK_EVENT);
    EXPECT_TRUE(signalled());
    Play(handle);
    EXPECT_TRUE(signalled());
    EXPECT_EQ(waveOutClose(handle), MMSYSERR_NOERROR);
    EXPECT_TRUE(signalled());
    CloseHandle(event);
}

TEST_F(CallbackTest, Thread) {
    MSG message = {};
    PeekMessageW(&message, nullptr, 0, 0, PM_NOREMOVE);  // makes the thread's queue
    const HWAVEOUT handle = Open(GetCurrentThreadId(), CALLBACK_THREAD);
    Play(handle);
    EXPECT_EQ(waveOutClose(handle), MMSYSERR_NOERROR);
    struct Expected {
        UINT Message;
        LPARAM Parameter;
    };
    for (const Expected& expected :
         {Expected{MM_WOM_OPEN, 0}, Expected{MM_WOM_DONE, reinterpret_cast<LPARAM>(&header_)},
          Expected{MM_WOM_CLOSE, 0}}) {
        ASSERT_TRUE(PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE));
        EXPECT_EQ(message.message, expected.Message);
        EXPECT_EQ(message.wParam, reinterpret_cast<WPARAM>(handle));
        EXPECT_EQ(message.lParam, expected.Parameter);
    }
    EXPECT_FALSE(PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE));
}

}  // namespace
