// Clients that take the system at its word: a reset that has answered has brought every header back. One
// frees them there and then, another hands all of them in again at once, a third does so inside the reset.
#include <atomic>
#include <chrono>
#include <thread>

#include "tests/reliability/stride.h"
#include "tests/support/driver_test.h"
#include "tests/support/system.h"
#include "tests/support/wave_client.h"

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
struct Playback : WaveOutCalls {
    static MMRESULT HandIn(Handle handle, WAVEHDR* header) {
        return waveOutWrite(handle, header, sizeof *header);
    }
    static MMRESULT Start(Handle handle) { return waveOutRestart(handle); }
};
struct Recording : WaveInCalls {
    static MMRESULT HandIn(Handle handle, WAVEHDR* header) {
        return waveInAddBuffer(handle, header, sizeof *header);
    }
    static MMRESULT Start(Handle handle) { return waveInStart(handle); }
};

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
        ASSERT_EQ(Direction::Open(&device_, 0, format_.Get(), reinterpret_cast<DWORD_PTR>(&Hear),
                                  reinterpret_cast<DWORD_PTR>(this), CALLBACK_FUNCTION),
                  MMSYSERR_NOERROR);
    }
    static void CALLBACK Hear(void*, UINT message, DWORD_PTR self, DWORD_PTR header, DWORD_PTR) {
        auto* test = reinterpret_cast<ClientHabitsTest*>(self);
        if (message == Direction::Done && test->handsInAgain_) {
            EXPECT_EQ(Direction::HandIn(test->device_, reinterpret_cast<WAVEHDR*>(header)), MMSYSERR_NOERROR);
        }
    }
    void HandIn(WAVEHDR* const (&headers)[Headers]) {
        for (WAVEHDR* header : headers) {
            ASSERT_EQ(Direction::HandIn(device_, header), MMSYSERR_NOERROR);
        }
    }
    // Until some headers are back, some are in the card, and others wait.
    void Run(unsigned round) {
        EXPECT_EQ(Direction::Start(device_), MMSYSERR_NOERROR);
        Cards().Advance((1 + round % 17) * Millisecond);
    }
    // Waits for the headers, but no longer than 200 ms of real time: on a busy machine some come later.
    void Reset(WAVEHDR* const (&headers)[Headers], unsigned round) {
        using Clock = std::chrono::steady_clock;
        const auto begin = Clock::now();
        EXPECT_EQ(Direction::Reset(device_), MMSYSERR_NOERROR);
        if (Clock::now() - begin >= std::chrono::milliseconds(100)) {
            while (!AreBack(headers) && Clock::now() - begin < std::chrono::seconds(20)) {
                std::this_thread::yield();
            }
        }
        EXPECT_TRUE(AreBack(headers)) << "round " << round;
    }
    static bool AreBack(WAVEHDR* const (&headers)[Headers]) {
        return std::all_of(std::begin(headers), std::end(headers), [](const WAVEHDR* header) {
            const DWORD flags = __atomic_load_n(&header->dwFlags, __ATOMIC_ACQUIRE);
            return (flags & (WHDR_DONE | WHDR_INQUEUE)) == WHDR_DONE;
        });
    }

    // Four buffers in the card at a time, the others wait.
    WaveFormat format_ = [] {
        WaveFormat format = PcmFormat(44100, 2, 24);
        format.Basic().nAvgBytesPerSec = 4;
        return format;
    }();
    typename Direction::Handle device_ = nullptr;
    std::atomic<bool> handsInAgain_ = false;  // from inside the callback
};

using Directions = testing::Types<Playback, Recording>;
TYPED_TEST_SUITE(ClientHabitsTest, Directions);

TYPED_TEST(ClientHabitsTest, FreesEveryHeaderWhenAResetHasAnswered) {
    this->Open();
    for (unsigned round = 0; round < Rounds && !this->HasFailure(); ++round) {
        WAVEHDR* headers[Headers];
        std::generate(std::begin(headers), std::end(headers), NewHeader);
        this->HandIn(headers);
        this->Run(round);
        this->Reset(headers, round);
        std::for_each(std::begin(headers), std::end(headers), test_system::GiveBackPage);
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
    std::generate(std::begin(headers), std::end(headers), NewHeader);
    for (unsigned round = 0; round < Rounds && !this->HasFailure(); ++round) {
        this->HandIn(headers);
        this->Run(round);
        this->Reset(headers, round);
    }
    EXPECT_EQ(TypeParam::Close(this->device_), MMSYSERR_NOERROR);
    std::for_each(std::begin(headers), std::end(headers), test_system::GiveBackPage);
}

TYPED_TEST(ClientHabitsTest, ClosesAfterAResetInWhichItHandedEveryHeaderInAgain) {
    WAVEHDR* headers[Headers];
    std::generate(std::begin(headers), std::end(headers), NewHeader);
    for (unsigned round = 0; round < 10; ++round) {
        this->Open();
        this->HandIn(headers);
        if (round % 2 == 0) {
            this->Run(round);
        }
        this->handsInAgain_ = true;
        EXPECT_EQ(TypeParam::Reset(this->device_), MMSYSERR_NOERROR);
        this->handsInAgain_ = false;
        EXPECT_EQ(TypeParam::Close(this->device_), MMSYSERR_NOERROR);
        EXPECT_TRUE(this->AreBack(headers)) << "round " << round;
    }
    std::for_each(std::begin(headers), std::end(headers), test_system::GiveBackPage);
}

}  // namespace
