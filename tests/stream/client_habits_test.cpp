// Clients that take the system at its word: a reset that has answered has brought every header back. One
// frees them there and then, another hands all of them in again at once.
#include <memory>

#include "tests/reliability/stride.h"
#include "tests/support/driver_test.h"
#include "tests/support/system.h"
#include "tests/support/wave_formats.h"

namespace {

#if defined(__SANITIZE_THREAD__)
constexpr unsigned Rounds = 1000 / Stride;
#else
constexpr unsigned Rounds = 1000;
#endif
constexpr size_t Headers = 10;
constexpr DWORD HeaderBytes = 1200;
constexpr int64_t Millisecond = 1000;

// The calls of one direction.
struct Playback {
    using Handle = HWAVEOUT;
    static MMRESULT Open(Handle* handle, const WaveFormat& format, DWORD_PTR callback) {
        return waveOutOpen(handle, 0, format.Get(), callback, 0, CALLBACK_FUNCTION);
    }
    static MMRESULT HandIn(Handle handle, WAVEHDR* header) {
        return waveOutWrite(handle, header, sizeof *header);
    }
    static MMRESULT Start(Handle handle) { return waveOutRestart(handle); }
    static MMRESULT Reset(Handle handle) { return waveOutReset(handle); }
    static MMRESULT Close(Handle handle) { return waveOutClose(handle); }
};

struct Recording {
    using Handle = HWAVEIN;
    static MMRESULT Open(Handle* handle, const WaveFormat& format, DWORD_PTR callback) {
        return waveInOpen(handle, 0, format.Get(), callback, 0, CALLBACK_FUNCTION);
    }
    static MMRESULT HandIn(Handle handle, WAVEHDR* header) {
        return waveInAddBuffer(handle, header, sizeof *header);
    }
    static MMRESULT Start(Handle handle) { return waveInStart(handle); }
    static MMRESULT Reset(Handle handle) { return waveInReset(handle); }
    static MMRESULT Close(Handle handle) { return waveInClose(handle); }
};

void CALLBACK Hear(void*, UINT, DWORD_PTR, DWORD_PTR, DWORD_PTR) {}

// A header on a page of its own, with its data: whoever touches it after it is freed ends the program.
WAVEHDR* NewHeader() {
    auto* header = static_cast<WAVEHDR*>(test_system::TakePage());
    *header = {};
    header->lpData = reinterpret_cast<LPSTR>(header + 1);
    header->dwBufferLength = HeaderBytes;
    header->dwFlags = WHDR_PREPARED;
    return header;
}

template <typename Direction>
class ClientHabitsTest : public DriverTest {
protected:
    void Open() {
        ASSERT_EQ(Direction::Open(&device_, format_, reinterpret_cast<DWORD_PTR>(&Hear)), MMSYSERR_NOERROR);
    }
    // Until some headers are back, some are in the card, and others wait.
    void Run(unsigned round) {
        EXPECT_EQ(Direction::Start(device_), MMSYSERR_NOERROR);
        Cards().Advance((1 + round % 17) * Millisecond);
    }
    void ExpectBack(const WAVEHDR* header, unsigned round) {
        const DWORD flags = __atomic_load_n(&header->dwFlags, __ATOMIC_ACQUIRE);
        EXPECT_EQ(flags & (WHDR_DONE | WHDR_INQUEUE), DWORD{WHDR_DONE}) << "round " << round;
    }

    // Four buffers in the card at a time, the others wait.
    WaveFormat format_ = [] {
        WaveFormat format = PcmFormat(44100, 2, 24);
        format.Basic().nAvgBytesPerSec = 4;
        return format;
    }();
    typename Direction::Handle device_ = nullptr;
};

using Directions = testing::Types<Playback, Recording>;
TYPED_TEST_SUITE(ClientHabitsTest, Directions);

TYPED_TEST(ClientHabitsTest, FreesEveryHeaderWhenAResetHasAnswered) {
    this->Open();
    for (unsigned round = 0; round < Rounds && !this->HasFailure(); ++round) {
        WAVEHDR* headers[Headers];
        for (WAVEHDR*& header : headers) {
            header = NewHeader();
            ASSERT_EQ(TypeParam::HandIn(this->device_, header), MMSYSERR_NOERROR);
        }
        this->Run(round);
        EXPECT_EQ(TypeParam::Reset(this->device_), MMSYSERR_NOERROR);
        for (WAVEHDR* header : headers) {
            this->ExpectBack(header, round);
        }
        for (WAVEHDR* header : headers) {
            test_system::GiveBackPage(header);
        }
        if (round % 10 == 9) {  // some never play again on the device
            ASSERT_EQ(TypeParam::Close(this->device_), MMSYSERR_NOERROR);
            this->Open();
        }
    }
    this->Cards().Advance(100 * Millisecond);
    EXPECT_EQ(TypeParam::Close(this->device_), MMSYSERR_NOERROR);
}

TYPED_TEST(ClientHabitsTest, HandsEveryHeaderInAgainWhenAResetHasAnswered) {
    this->Open();
    WAVEHDR* headers[Headers];
    for (WAVEHDR*& header : headers) {
        header = NewHeader();
    }
    for (unsigned round = 0; round < Rounds && !this->HasFailure(); ++round) {
        for (WAVEHDR* header : headers) {
            ASSERT_EQ(TypeParam::HandIn(this->device_, header), MMSYSERR_NOERROR) << "round " << round;
        }
        this->Run(round);
        EXPECT_EQ(TypeParam::Reset(this->device_), MMSYSERR_NOERROR);
        for (const WAVEHDR* header : headers) {
            this->ExpectBack(header, round);
        }
    }
    EXPECT_EQ(TypeParam::Close(this->device_), MMSYSERR_NOERROR);
    for (WAVEHDR* header : headers) {
        test_system::GiveBackPage(header);
    }
}

}  // namespace
