// A client that takes the system at its word: a reset that has answered has brought every header back, and so
// it frees them there and then.
#include <chrono>

#include "tests/reliability/stride.h"
#include "tests/support/driver_test.h"

namespace {

#if defined(KESTVOX_SANITIZE_THREAD)
constexpr unsigned Rounds = 1000 / Stride;
#else
constexpr unsigned Rounds = 1000;
#endif
constexpr size_t Headers = 10;

template <typename Calls>
class ClientHabitsTest : public DriverTest {
protected:
    void Open() {
        WaveFormat format = PcmFormat(44100, 2, 24);
        format.Basic().nAvgBytesPerSec = 4;  // four buffers in the card at a time, the others wait
        ASSERT_EQ(Calls::Open(&device_, 0, format.Get(), 0, 0, CALLBACK_NULL), MMSYSERR_NOERROR);
    }
    // Until some headers are back, some are in the card, and others wait.
    void Run(unsigned round) {
        for (WAVEHDR*& header : headers_) {
            header = test_system::TakeHeader(1200);
            EXPECT_EQ(Calls::HandIn(device_, header, sizeof *header), MMSYSERR_NOERROR);
        }
        EXPECT_EQ(Calls::Start(device_), MMSYSERR_NOERROR);
        Cards().Advance((1 + round % 17) * Millisecond);
    }
    bool AreBack() const {
        return std::all_of(std::begin(headers_), std::end(headers_), [](const WAVEHDR* header) {
            return (header->dwFlags & (WHDR_DONE | WHDR_INQUEUE)) == WHDR_DONE;
        });
    }

    WAVEHDR* headers_[Headers] = {};
    typename Calls::Handle device_ = nullptr;
};

using Directions = testing::Types<WaveOutCalls, WaveInCalls>;
TYPED_TEST_SUITE(ClientHabitsTest, Directions);

// A reset waits for the headers, but no longer than 200 ms of real time: on a busy machine some come later.
TYPED_TEST(ClientHabitsTest, FreesEveryHeaderWhenAResetHasAnswered) {
    using Clock = std::chrono::steady_clock;
    this->Open();
    for (unsigned round = 0; round < Rounds && !this->HasFailure(); ++round) {
        this->Run(round);
        const auto begin = Clock::now();
        EXPECT_EQ(TypeParam::Reset(this->device_), MMSYSERR_NOERROR);
        const bool inTime = Clock::now() - begin < std::chrono::milliseconds(100);
        if (!inTime) {
            this->Cards().Advance(1);  // waits for the service thread
        }
        EXPECT_TRUE(this->AreBack()) << "round " << round;
        std::for_each(std::begin(this->headers_), std::end(this->headers_), test_system::GiveBackPage);
        if (round % 10 == 9) {  // some never play again on the device
            ASSERT_EQ(TypeParam::Close(this->device_), MMSYSERR_NOERROR);
            this->Open();
        }
    }
    this->Cards().Advance(100 * this->Millisecond);
    EXPECT_EQ(TypeParam::Close(this->device_), MMSYSERR_NOERROR);
}

}  // namespace
