// Random recordings: buffers of any length, starts, stops and resets, in any layout, dithered or not; against
// what the card has recorded.
#include <cstdlib>
#include <deque>
#include <random>

#include "tests/support/input_test.h"

namespace {

using Sizes = std::vector<DWORD>;

constexpr DWORD Rate = 48000;
constexpr DWORD TransferUnit = 32;  // bytes of the card's memory
constexpr int MostDither = 2;       // steps of the client's samples

class RecordedModelTest : public InputTest {
protected:
    struct Share {
        DWORD Begin;  // byte of the run that it begins with
        DWORD Size;
    };

    DWORD Draw(size_t below) { return static_cast<DWORD>(random_() % below); }
    DWORD SampleSize() const { return format_.Get()->nBlockAlign / format_.Get()->nChannels; }
    bool Packed() const { return SampleSize() == 3; }
    bool Dithered() const { return dither_ && SampleSize() < 3; }
    // What the card puts into a buffer, and what of it is delivered when it is full.
    DWORD Capacity(DWORD length) const {
        return Dithered() ? length - length % SampleSize() : Packed() ? length : length / 4 * 4;
    }
    DWORD Most(DWORD length) const { return Packed() ? length : length / 4 * 4; }

    // The shares of the buffers that a run of so many frames has begun, from the first that is queued.
    std::vector<Share> Shares(DWORD frames) const {
        const DWORD recorded = frames * format_.Get()->nBlockAlign;
        const DWORD slotUnit = TransferUnit / 4 * SampleSize();
        const DWORD cardUnit = Packed() || Dithered() ? slotUnit : TransferUnit;
        const DWORD stopUnit = Packed() ? slotUnit : TransferUnit;
        std::vector<Share> shares;
        DWORD begin = 0;
        for (const DWORD length : queued_) {
            const bool full = begin + Capacity(length) <= recorded;
            if (!full && begin >= recorded / cardUnit * cardUnit) {
                break;
            }
            const DWORD stopped = recorded / stopUnit * stopUnit;
            const DWORD partly = stopped > begin ? stopped - begin : 0;
            shares.push_back({begin, full ? Most(length) : std::min(partly, Most(length))});
            begin += Capacity(length);
            if (!full) {
                break;
            }
        }
        return shares;
    }

    // Levels that a dither leaves next to where they are.
    std::vector<BYTE> PlugInLevels() {
        std::vector<simulator::Frame> frames;
        for (size_t i = 0; i < 4000; ++i) {
            const auto level = [this] { return (static_cast<int32_t>(Draw(200)) - 100) * (1 << 24); };
            frames.push_back({level(), level()});
        }
        Cards().PlugIn(0, simulator::Port::Analog, simulator::InputSignal::Run(frames));
        return ClientBytes(format_, frames);
    }
    void AddBuffers(DWORD bytes) {
        for (DWORD capacity = 0; capacity < bytes; capacity += Capacity(queued_.back())) {
            DWORD length = 64 + Draw(1500);
            length -= Packed() ? length % 3 : 0;
            Add(length, 1, Dithered() ? 0 : Draw(4));
            queued_.push_back(length);
        }
    }

    void ExpectSound(const std::vector<BYTE>& sound, const std::vector<Share>& shares, size_t at) {
        const std::vector<BYTE> all = recorder_.Recorded();
        for (const Share& share : shares) {
            for (DWORD i = 0; i + SampleSize() <= share.Size; i += SampleSize()) {
                const BYTE* is = &all[at + i];
                const BYTE* was = &sound[share.Begin + i];
                if (!Dithered()) {
                    ASSERT_EQ(memcmp(is, was, SampleSize()), 0) << "byte " << share.Begin + i;
                    continue;
                }
                const auto wide = [](const BYTE* of) { return static_cast<int16_t>(of[0] | of[1] << 8); };
                const int step = SampleSize() == 1 ? *is - *was : wide(is) - wide(was);
                ASSERT_LE(std::abs(step), MostDither) << "byte " << share.Begin + i;
            }
            at += share.Size;
        }
    }

    void RunAndEnd(DWORD frames, bool reset) {
        SCOPED_TRACE(testing::Message() << frames << " frames, " << (reset ? "reset" : "stop"));
        AddBuffers((frames + 100) * format_.Get()->nBlockAlign);
        const size_t countBefore = recorder_.Counts().size();
        const size_t bytesBefore = recorder_.Recorded().size();
        const std::vector<BYTE> sound = PlugInLevels();
        ASSERT_EQ(recorder_.Start(), MMSYSERR_NOERROR);
        AdvanceFrames(frames, Rate);
        ASSERT_EQ(recorder_.Stop(), MMSYSERR_NOERROR);
        Cards().Advance(1000);
        const DWORD position = recorder_.Position();
        EXPECT_NEAR(position, frames, 1);
        const std::vector<Share> shares = Shares(position);
        Sizes expected;
        for (const Share& share : shares) {
            expected.push_back(share.Size);
            queued_.pop_front();
        }
        if (reset) {
            ASSERT_EQ(recorder_.Reset(), MMSYSERR_NOERROR);
            Cards().Advance(1000);
            expected.resize(expected.size() + queued_.size());  // empty
            queued_.clear();
            ExpectEachReturnedOnce();
        }
        const Sizes counts = recorder_.Counts();
        ASSERT_EQ(Sizes(counts.begin() + static_cast<long>(countBefore), counts.end()), expected);
        ExpectSound(sound, shares, bytesBefore);
    }

    WaveFormat format_;
    bool dither_ = false;
    std::mt19937 random_{1};
    std::deque<DWORD> queued_;  // lengths of the buffers that have not come back
};

TEST_F(RecordedModelTest, EachBufferHoldsWhatTheCardRecordedIntoIt) {
    const WaveFormat formats[] = {
        PcmFormat(Rate, 1, 8),  PcmFormat(Rate, 2, 8),  PcmFormat(Rate, 1, 16), PcmFormat(Rate, 2, 16),
        PcmFormat(Rate, 1, 24), PcmFormat(Rate, 2, 24), PcmFormat(Rate, 1, 32), PcmFormat(Rate, 2, 32),
    };
    for (const bool dither : {false, true}) {
        dither_ = dither;
        StoreSetting(0, TEXT("DitherADC"), dither ? 1 : 0);
        for (int round = 0; round < 48 && !HasFatalFailure(); ++round) {
            format_ = formats[Draw(std::size(formats))];
            format_.Basic().nAvgBytesPerSec = 1 << 22;  // every buffer is in the card
            SCOPED_TRACE(testing::Message()
                         << "round " << round << ", dither " << dither << ", "
                         << format_.Get()->wBitsPerSample << " bits of " << format_.Get()->nBlockAlign);
            Open(format_);
            for (int run = 0; run < 6 && !HasFatalFailure(); ++run) {
                RunAndEnd(Draw(1500), Draw(4) == 0);
            }
            EXPECT_TRUE(recorder_.GuardsIntact());
            recorder_.Shut();
            queued_.clear();
            recorder_.Forget();
        }
        UnloadDriver();
    }
}

}  // namespace
