// Random writes, breaks, pauses and resets, against a model of what is heard and when each header comes back.
//
// The format claims no byte rate, so that exactly four buffers are in flight.
#include <random>

#include "tests/support/output_test.h"

namespace {

constexpr DWORD Begin = WHDR_BEGINLOOP;
constexpr DWORD End = WHDR_ENDLOOP;

// A buffer is its index in the order written.
class LoopModel {
public:
    void Write(DWORD flags, DWORD loops) {
        if ((flags & Begin) != 0 && openPasses_ == 0) {
            openPasses_ = std::max(loops, DWORD{1});
        }
        buffers_.push_back({flags, std::max(openPasses_, DWORD{1})});
        if ((flags & End) != 0) {
            openPasses_ = 0;
        }
        HandOver();
    }
    // The card has played one.
    void Complete() {
        const size_t buffer = handed_[heard_++];
        if (buffers_[buffer].Left == 0 && !InCard(buffer)) {
            Back.push_back(buffer);
        }
        HandOver();
    }
    // What is left of the pass that is being handed over is all that is left of the loop.
    void Break() {
        if (!loop_ || passes_ == 1) {
            return;
        }
        passes_ = 1;
        bool ended = false;
        for (size_t i = *loop_; i < buffers_.size() && !ended; ++i) {
            buffers_[i].Left = i < next_ ? 0 : 1;
            if (i < next_ && !InCard(i)) {
                Back.push_back(i);
            }
            ended = (buffers_[i].Flags & End) != 0;
        }
        if (!ended) {
            openPasses_ = 1;
        }
    }
    void Reset() {
        heard_ = 0;
        handed_.clear();
        next_ = buffers_.size();
        loop_.reset();
        openPasses_ = 0;
    }

    bool InLoop() const { return openPasses_ != 0; }
    bool Playing() const { return heard_ < handed_.size(); }
    std::vector<size_t> Heard() const {
        return {handed_.begin(), handed_.begin() + static_cast<long>(heard_)};
    }

    std::vector<size_t> Back;  // in the order in which they came back

private:
    struct Buffer {
        DWORD Flags;
        DWORD Left;  // plays that are not handed over yet
    };

    bool InCard(size_t buffer) const {
        return std::find(handed_.begin() + static_cast<long>(heard_), handed_.end(), buffer) != handed_.end();
    }
    void HandOver() {
        while (handed_.size() < heard_ + 4 && next_ < buffers_.size()) {
            const size_t buffer = next_++;
            if ((buffers_[buffer].Flags & Begin) != 0 && !loop_) {
                loop_ = buffer;
                passes_ = buffers_[buffer].Left;
            }
            --buffers_[buffer].Left;
            if ((buffers_[buffer].Flags & End) != 0 && loop_) {
                next_ = --passes_ != 0 ? *loop_ : next_;
                loop_ = passes_ != 0 ? loop_ : std::nullopt;
            }
            handed_.push_back(buffer);
        }
    }

    std::vector<Buffer> buffers_;
    std::vector<size_t> handed_;  // to the card; the first heard_ of them have been played
    size_t heard_ = 0;
    size_t next_ = 0;
    std::optional<size_t> loop_;  // its first buffer
    DWORD passes_ = 0;            // of it, with the one that is being handed over
    DWORD openPasses_ = 0;        // of the loop that is being written
};

class LoopModelTest : public OutputTest {
protected:
    DWORD Draw(size_t below) { return static_cast<DWORD>(random_() % below); }
    // A hundred frames.
    std::vector<BYTE> Data(size_t buffer) const {
        return Pattern(100 * format_.Get()->nBlockAlign, static_cast<unsigned>(buffer));
    }
    // Samples that the card reads where they are, or that are converted for it.
    void Open(WORD bits) {
        WaveFormat format = PcmFormat(44100, 2, bits);
        format.Basic().nAvgBytesPerSec = 0;
        OutputTest::Open(format);
    }

    void Write(DWORD flags, DWORD loops) {
        ASSERT_EQ(player_.Write(Data(player_.HeaderCount()), flags, loops), MMSYSERR_NOERROR);
        model_.Write(flags, loops);
    }
    void Play(unsigned buffers) {
        for (; buffers != 0 && model_.Playing(); --buffers) {
            ASSERT_TRUE(Cards().AdvanceToNextCompletion(Second));
            model_.Complete();
            ASSERT_EQ(player_.DoneOrder(), model_.Back);
        }
    }
    void Reset() {
        ASSERT_EQ(player_.Reset(), MMSYSERR_NOERROR);
        Cards().Advance(1000);
        EXPECT_EQ(player_.Position(), 0u);
        ExpectEachReturnedOnce();
        for (size_t i = 0; i < player_.HeaderCount(); ++i) {
            EXPECT_EQ(player_.Header(i).dwLoops, 0u) << "passes of header " << i;
        }
        Cards().ForgetAudio();
        model_.Reset();
        model_.Back = player_.DoneOrder();
        paused_ = false;
    }
    void Step() {
        const DWORD kind = Draw(16);
        if (kind == 0) {
            Reset();
        } else if (kind < 3) {
            ASSERT_EQ(waveOutBreakLoop(player_.Handle()), MMSYSERR_NOERROR);
            model_.Break();
        } else if (kind == 3) {
            paused_ = !paused_;
            ASSERT_EQ(paused_ ? player_.Stop() : player_.Start(), MMSYSERR_NOERROR);
        } else if (kind > 8) {
            Write(Draw(2) * Draw(4) * Begin, Draw(5));  // none of the marks, any, or both
        } else if (paused_) {
            Cards().Advance(Second);
        } else {
            Play(1 + Draw(5));
        }
    }
    // To the end of what is written; a loop that is still open is ended. Then every header is back.
    void Finish() {
        if (model_.InLoop()) {
            Write(End, 0);
        }
        ASSERT_EQ(player_.Start(), MMSYSERR_NOERROR);
        Play(1000);
        std::vector<BYTE> data;
        for (const size_t buffer : model_.Heard()) {
            const std::vector<BYTE> one = Data(buffer);
            data.insert(data.end(), one.begin(), one.end());
        }
        EXPECT_TRUE(Played() == Sound(format_, data));
        ExpectEachReturnedOnce();
    }

    LoopModel model_;
    std::mt19937 random_;
    bool paused_ = false;
};

TEST_F(LoopModelTest, WhatIsHeardAndReturnedIsAsTheRulesOfLoopsSay) {
    for (unsigned seed = 0; seed < 100 && !HasFailure(); ++seed) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        random_.seed(seed);
        model_ = {};
        paused_ = false;
        Cards().ForgetAudio();
        Open(seed % 2 == 0 ? 16 : 24);
        for (int step = 0; step < 100 && !HasFatalFailure(); ++step) {
            Step();
            ASSERT_EQ(player_.DoneOrder(), model_.Back) << "step " << step;
        }
        Finish();
        ASSERT_EQ(player_.Close(), MMSYSERR_NOERROR);
        player_.Forget();
    }
}

}  // namespace
