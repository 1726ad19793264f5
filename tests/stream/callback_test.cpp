// Ways in which a client wants to be told, other than by a function.
#include "tests/support/output_test.h"

namespace {

class CallbackTest : public OutputTest {
protected:
    // Opens, plays a buffer and closes.
    void Play(DWORD_PTR target, DWORD type, const std::function<void(UINT)>& told) {
        HWAVEOUT handle = nullptr;
        EXPECT_EQ(waveOutOpen(&handle, AnalogOut, PcmFormat(44100, 2, 16).Get(), target, 0, type),
                  MMSYSERR_NOERROR);
        told(MM_WOM_OPEN);
        EXPECT_EQ(waveOutPrepareHeader(handle, &header_, sizeof header_), MMSYSERR_NOERROR);
        EXPECT_EQ(waveOutWrite(handle, &header_, sizeof header_), MMSYSERR_NOERROR);
        Cards().Advance(Second);
        EXPECT_EQ(waveOutUnprepareHeader(handle, &header_, sizeof header_), MMSYSERR_NOERROR);
        told(MM_WOM_DONE);
        EXPECT_EQ(waveOutClose(handle), MMSYSERR_NOERROR);
        told(MM_WOM_CLOSE);
    }

    // The next message of the calling thread, and the only one.
    void ExpectMessage(UINT expected, HWND window) {
        MSG message = {};
        ASSERT_TRUE(PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE));
        EXPECT_EQ(message.message, expected);
        EXPECT_EQ(message.hwnd, window);
        EXPECT_EQ(message.lParam, expected == MM_WOM_DONE ? reinterpret_cast<LPARAM>(&header_) : 0);
        EXPECT_FALSE(PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE));
    }

    std::vector<BYTE> data_ = Pattern(4000);
    WAVEHDR header_ = {reinterpret_cast<LPSTR>(data_.data()), 4000, 0, 0, 0, 0, nullptr, 0};
};

struct ClientOfOpen {
    DWORD_PTR Stream = 0;
    DWORD_PTR WhenTold = 0;

    static void CALLBACK Tell(HDRVR, UINT message, DWORD_PTR instance, DWORD_PTR, DWORD_PTR) {
        auto& client = *reinterpret_cast<ClientOfOpen*>(instance);
        client.WhenTold = message == WOM_OPEN ? client.Stream : client.WhenTold;
    }
};

// Whoever is told of an open can use the stream at once.
TEST_F(CallbackTest, ComesWhenTheStreamIsThere) {
    const std::string before = test_system::Usage();
    ClientOfOpen client;
    {
        const DriverLibrary library;
        EXPECT_EQ(library.Open(true, AnalogOut, PcmFormat(44100, 2, 16), ClientOfOpen::Tell, &client,
                               &client.Stream),
                  MMSYSERR_NOERROR);
    }
    EXPECT_NE(client.WhenTold, 0u);
    EXPECT_EQ(client.WhenTold, client.Stream);
    test_system::ExpectUsage(before);
}

TEST_F(CallbackTest, Event) {
    const HANDLE event = CreateEventW(nullptr, FALSE, FALSE, nullptr);
    Play(reinterpret_cast<DWORD_PTR>(event), CALLBACK_EVENT,
         [event](UINT) { EXPECT_EQ(WaitForSingleObject(event, 0), WAIT_OBJECT_0); });
    CloseHandle(event);
}

TEST_F(CallbackTest, Thread) {
    MSG message = {};
    PeekMessageW(&message, nullptr, 0, 0, PM_NOREMOVE);  // makes the thread's queue
    Play(GetCurrentThreadId(), CALLBACK_THREAD, [this](UINT told) { ExpectMessage(told, nullptr); });
}

TEST_F(CallbackTest, Window) {
    const HWND window =
        CreateWindowExW(0, TEXT("#32770"), TEXT(""), 0, 0, 0, 1, 1, nullptr, nullptr, nullptr, nullptr);
    ASSERT_NE(window, nullptr);
    Play(reinterpret_cast<DWORD_PTR>(window), CALLBACK_WINDOW,
         [&](UINT told) { ExpectMessage(told, window); });
    DestroyWindow(window);
}

}  // namespace
