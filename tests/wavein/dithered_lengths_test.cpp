// Dithered recordings into buffers whose lengths are no whole words: the card fills them to their last
// sample, the client gets whole words, and what is dropped is missing there and nowhere else.
#include <algorithm>
#include <cstdlib>

#include "tests/support/input_test.h"

namespace {

using Sizes = std::vector<DWORD>;

constexpr DWORD Rate = 48000;
constexpr unsigned TransferUnit = 32;  // bytes

struct LengthCase {
    WORD Bits;
    WORD Channels;
    DWORD Length;
};

// A staircase, in steps of an 8-bit sample, that the dither moves by little.
int Level(size_t frame) {
    return static_cast<int>(frame / 50 % 180) - 90;
}
constexpr int MostDither = 2;  // steps of the client's samples

class DitheredLengthsTest : public InputTest, public testing::WithParamInterface<LengthCase> {
protected:
    void SetUp() override { StoreSetting(0, TEXT("DitherADC"), 1); }

    static DWORD SampleSize() { return GetParam().Bits / 8u; }
    // A unit of card memory, whose samples take four bytes, in the client's bytes.
    static DWORD CardUnit() { return TransferUnit / 4 * SampleSize(); }
    static DWORD FrameSize() { return SampleSize() * GetParam().Channels; }

    void PlugInStaircase() {
        std::vector<simulator::Frame> frames;
        for (size_t i = 0; i < 5000; ++i) {
            const int32_t sample = Level(i) * (1 << 24);
            frames.push_back({sample, sample});
        }
        Cards().PlugIn(0, simulator::Port::Analog, simulator::InputSignal::Run(frames));
    }

    // What a run that recorded so many frames leaves in the buffers that it has begun, by the buffer: of a
    // full one all whole words, of the last one what was recorded up to the last whole unit.
    static Sizes Expected(DWORD frames) {
        const DWORD length = GetParam().Length;
        const DWORD capacity = length - length % SampleSize();
        const DWORD recorded = frames * FrameSize();
        const DWORD stopped = recorded / TransferUnit * TransferUnit;
        Sizes sizes;
        DWORD begin = 0;
        for (; begin + capacity <= recorded; begin += capacity) {
            sizes.push_back(length / 4 * 4);
        }
        if (begin < recorded / CardUnit() * CardUnit()) {
            sizes.push_back(std::min(stopped > begin ? stopped - begin : 0, length / 4 * 4));
        }
        return sizes;
    }

    // The samples of one run's buffers, which came back from `first` on.
    void ExpectStaircase(const Sizes& sizes, size_t recordedBefore) {
        const DWORD capacity = GetParam().Length / SampleSize();
        const std::vector<BYTE> all = recorder_.Recorded();
        size_t at = recordedBefore;
        for (size_t buffer = 0; buffer < sizes.size(); ++buffer) {
            for (DWORD i = 0; i < sizes[buffer] / SampleSize(); ++i, at += SampleSize()) {
                const int level = Level((buffer * capacity + i) / GetParam().Channels);
                const int sample =
                    SampleSize() == 1 ? all[at] - 128 : static_cast<int16_t>(all[at] | all[at + 1] << 8);
                const int expected = SampleSize() == 1 ? level : level * 256;
                ASSERT_LE(std::abs(sample - expected), MostDither) << "buffer " << buffer << ", sample " << i;
            }
        }
    }

    void RunAndStop(unsigned frames) {
        SCOPED_TRACE(testing::Message() << frames << " frames");
        const Sizes before = recorder_.Counts();
        const size_t recordedBefore = recorder_.Recorded().size();
        PlugInStaircase();
        recorder_.Start();
        AdvanceFrames(frames, Rate);
        recorder_.Stop();
        Cards().Advance(1000);
        const Sizes after = recorder_.Counts();
        const Sizes sizes(after.begin() + static_cast<long>(before.size()), after.end());
        ASSERT_EQ(sizes, Expected(recorder_.Position()));
        ExpectStaircase(sizes, recordedBefore);
    }
};

TEST_P(DitheredLengthsTest, HoldWhatWasRecordedIntoThem) {
    WaveFormat format = PcmFormat(Rate, GetParam().Channels, GetParam().Bits);
    format.Basic().nAvgBytesPerSec = 1 << 20;  // every buffer is in the card
    Open(format);
    for (const bool afterReset : {false, true}) {
        Add(GetParam().Length, 40);
        for (const unsigned frames : {700u, 37u, 2500u, 1002u, 1u, 3001u, 500u}) {
            RunAndStop(frames);
        }
        if (!afterReset) {
            recorder_.Start();
            AdvanceFrames(333, Rate);
        }
        recorder_.Reset();
        Cards().Advance(1000);
        ExpectEachReturnedOnce();
    }
}

INSTANTIATE_TEST_SUITE_P(Odd, DitheredLengthsTest,
                         testing::Values(LengthCase{8, 1, 1001}, LengthCase{8, 1, 1002},
                                         LengthCase{8, 1, 1003}, LengthCase{8, 2, 1001},
                                         LengthCase{8, 2, 1002}, LengthCase{16, 1, 1002},
                                         LengthCase{16, 1, 1003}, LengthCase{16, 2, 1002}),
                         [](const testing::TestParamInfo<LengthCase>& test) {
                             return std::to_string(test.param.Bits) + "BitsOf" +
                                    std::to_string(test.param.Channels) + "Into" +
                                    std::to_string(test.param.Length);
                         });

}  // namespace
