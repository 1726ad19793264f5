// Random recordings: buffers of any length, starts, stops and resets, of either input, in any layout,
// dithered or not; against what the card has recorded.
#include <deque>
#include <random>

#include "convert/capture.h"
#include "tests/reliability/stride.h"
#include "tests/support/input_test.h"

namespace {

using Sizes = std::vector<DWORD>;

constexpr DWORD Rate = 48000;
constexpr DWORD TransferUnit = 32;  // bytes of the card's memory

class RecordedModelTest : public InputTest {
protected:
    struct Share {
        DWORD Begin;  // byte of the run that it begins with
        DWORD Size;
    };

    DWORD Draw(size_t below) { return static_cast<DWORD>(random_() % below); }
    DWORD SampleSize() const { return format_.Get()->nBlockAlign / format_.Get()->nChannels; }
    bool Packed() const { return SampleSize() == 3; }
    bool Dithered() const { return dither_ != 0 && device_ == AnalogIn && SampleSize() < 3; }
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

    void AddBuffers(DWORD bytes) {
        for (DWORD capacity = 0; capacity < bytes; capacity += Capacity(queued_.back())) {
            DWORD length = 64 + Draw(1500);
            length -= Packed() ? length % 3 : 0;
            Add(length, 1, Draw(4));
            queued_.push_back(length);
        }
    }

    // The bytes of a share; dithered, by the routine's own account. Buffer boundaries are not heard in it,
    // and a reset begins the random sequence again.
    std::vector<BYTE> Sound(const Share& share) {
        if (!Dithered()) {
            const bool plain = format_.Get()->wFormatTag == WAVE_FORMAT_PCM;
            const std::vector<BYTE> all = ClientBytes(format_, signal_, plain ? side_ : Justified::Left);
            return {all.begin() + share.Begin, all.begin() + share.Begin + share.Size};
        }
        std::vector<int32_t> slots;
        for (const simulator::Frame& frame : signal_) {
            slots.push_back(frame.Left);
            if (format_.Get()->nChannels == 2) {
                slots.push_back(frame.Right);
            }
        }
        std::vector<BYTE> data(share.Size);
        const int32_t* source = &slots[share.Begin / SampleSize()];
        const size_t count = share.Size / SampleSize();
        if (SampleSize() == 1) {
            kestvox::DitherCapture8(data.data(), source, count, dither_, format_.Get()->nChannels, state_);
        } else {
            kestvox::DitherCapture16(reinterpret_cast<int16_t*>(data.data()), source, count, dither_,
                                     format_.Get()->nChannels, state_);
        }
        return data;
    }

    // How a run ends: a reset may come while it still goes on.
    enum class End { Stop, StopAndReset, Reset };

    void RunAndEnd(DWORD frames, End end) {
        SCOPED_TRACE(testing::Message() << frames << " frames, end " << static_cast<int>(end));
        AddBuffers((frames + 100) * format_.Get()->nBlockAlign);
        const size_t countBefore = recorder_.Counts().size();
        const size_t bytesBefore = recorder_.Recorded().size();
        signal_ = PlugIn(4000, static_cast<Port>(device_), Draw(1000));
        ASSERT_EQ(recorder_.Start(), MMSYSERR_NOERROR);
        AdvanceFrames(frames, Rate);
        const DWORD position = recorder_.Position();
        EXPECT_NEAR(position, frames, 1);
        if (end != End::Reset) {
            ASSERT_EQ(recorder_.Stop(), MMSYSERR_NOERROR);
        } else {
            EXPECT_EQ(recorder_.Close(), unsigned{WAVERR_STILLPLAYING});
        }
        if (end != End::Stop) {
            ASSERT_EQ(recorder_.Reset(), MMSYSERR_NOERROR);
        }
        Cards().Advance(1000);
        const std::vector<Share> shares = Shares(position);
        Sizes expected;
        std::vector<BYTE> sound;
        for (const Share& share : shares) {
            const std::vector<BYTE> bytes = Sound(share);
            sound.insert(sound.end(), bytes.begin(), bytes.end());
            expected.push_back(share.Size);
            queued_.pop_front();
        }
        if (end != End::Stop) {
            expected.resize(expected.size() + queued_.size());  // empty
            queued_.clear();
            state_ = {};
            ExpectEachReturnedOnce();
        }
        const Sizes counts = recorder_.Counts();
        ASSERT_EQ(Sizes(counts.begin() + static_cast<long>(countBefore), counts.end()), expected);
        const std::vector<BYTE> recorded = recorder_.Recorded();
        ASSERT_TRUE(std::equal(recorded.begin() + static_cast<long>(bytesBefore), recorded.end(),
                               sound.begin(), sound.end()));
    }

    WaveFormat format_;
    UINT device_ = AnalogIn;
    DWORD dither_ = 0;
    Justified side_ = Justified::Left;
    std::vector<simulator::Frame> signal_;
    kestvox::DitherState state_ = {};
    std::mt19937 random_{1};
    std::deque<DWORD> queued_;  // lengths of the buffers that have not come back
};

TEST_F(RecordedModelTest, EachBufferHoldsWhatTheCardRecordedIntoIt) {
    const WaveFormat formats[] = {
        PcmFormat(Rate, 1, 8),
        PcmFormat(Rate, 2, 8),
        PcmFormat(Rate, 1, 16),
        PcmFormat(Rate, 2, 16),
        PcmFormat(Rate, 2, 20),
        PcmFormat(Rate, 1, 24),
        PcmFormat(Rate, 2, 24),
        PcmFormat(Rate, 1, 20, 4),
        PcmFormat(Rate, 2, 24, 4),
        PcmFormat(Rate, 1, 32),
        ExtensibleFormat(Rate, 2, 16, 12),
        ExtensibleFormat(Rate, 1, 24, 24),
        ExtensibleFormat(Rate, 2, 32, 20),
    };
    for (int round = 0; round < 96 && !HasFatalFailure(); round += RoundStep) {
        dither_ = Draw(5);
        side_ = Draw(2) != 0 ? Justified::Left : Justified::Right;
        device_ = Draw(2);
        format_ = formats[Draw(std::size(formats))];
        format_.Basic().nAvgBytesPerSec = 1 << 22;  // every buffer is in the card
        SCOPED_TRACE(testing::Message()
                     << "round " << round << ", device " << device_ << ", dither " << dither_ << ", "
                     << format_.Get()->wBitsPerSample << " bits of " << format_.Get()->nBlockAlign);
        StoreSetting(0, TEXT("DitherADC"), dither_);
        StoreSetting(0, TEXT("Left24"), side_ == Justified::Left ? 1 : 0);
        Cards().SetDigitalInputRate(0, Rate);
        Open(format_, device_);
        for (int run = 0; run < 6 && !HasFatalFailure(); ++run) {
            constexpr End Ends[] = {End::Stop, End::Stop, End::Stop, End::StopAndReset, End::Reset};
            RunAndEnd(Draw(1500), Ends[Draw(std::size(Ends))]);
        }
        CloseAndForget();
        queued_.clear();
        state_ = {};
        UnloadDriver();
    }
}

}  // namespace
