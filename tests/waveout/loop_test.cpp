// Loops. Buffers are letters: A to Z in the order written, each of 100 frames of its own.
//
// The format claims no byte rate, so that exactly four buffers are in flight and every phase of a loop
// can be reached by counting completions.
#include "tests/support/output_test.h"

namespace {

constexpr DWORD Begin = WHDR_BEGINLOOP;
constexpr DWORD End = WHDR_ENDLOOP;
constexpr unsigned InFlight = 4;

std::vector<BYTE> Letter(char letter) {
    return Pattern(400, static_cast<unsigned>(letter));
}

std::string Repeated(const std::string& text, unsigned times) {
    std::string all;
    for (unsigned i = 0; i < times; ++i) {
        all += text;
    }
    return all;
}

class LoopTest : public OutputTest {
protected:
    void SetUp() override {
        format_.Basic().nAvgBytesPerSec = 0;
        Reopen();
    }

    // Each case of a table begins at A.
    void Reopen() {
        player_.Shut();
        player_.Forget();
        Cards().ForgetAudio();
        ASSERT_EQ(player_.Open(AnalogOut, format_), MMSYSERR_NOERROR);
    }

    void Write(DWORD flags = 0, DWORD loops = 0) {
        const char letter = static_cast<char>('A' + player_.HeaderCount());
        ASSERT_EQ(player_.Write(Letter(letter), flags, loops), MMSYSERR_NOERROR);
    }
    // A loop of so many buffers.
    void WriteLoop(unsigned buffers, DWORD loops) {
        for (unsigned i = 0; i < buffers; ++i) {
            Write((i == 0 ? Begin : 0) | (i + 1 == buffers ? End : 0), i == 0 ? loops : 77);
        }
    }
    void AdvanceBuffers(unsigned count) {
        for (unsigned i = 0; i < count; ++i) {
            ASSERT_TRUE(Cards().AdvanceToNextCompletion(Second));
        }
    }
    void Break() { EXPECT_EQ(waveOutBreakLoop(player_.Handle()), MMSYSERR_NOERROR); }

    // Plays to the end: this was heard since the last look, and every header came back once.
    void ExpectPlayed(const std::string& letters) {
        Cards().Advance(5 * Second);
        std::vector<BYTE> data;
        for (const char letter : letters) {
            const std::vector<BYTE> one = Letter(letter);
            data.insert(data.end(), one.begin(), one.end());
        }
        EXPECT_EQ(Played().size(), letters.size() * 100) << letters;
        EXPECT_TRUE(Played() == Sound(format_, data)) << letters;
        ExpectEachReturnedOnce();
        Cards().ForgetAudio();
    }

    WaveFormat format_ = PcmFormat(44100, 2, 16);
};

TEST_F(LoopTest, ThreeBuffersThreeTimesAreNine) {
    WriteLoop(3, 3);
    AdvanceBuffers(6);
    EXPECT_EQ(player_.DoneCount(), 0u);
    AdvanceBuffers(1);
    EXPECT_EQ(player_.DoneOrder(), std::vector<size_t>{0});
    ExpectPlayed("ABCABCABC");
}

TEST_F(LoopTest, WhatStandsAroundLoopsIsPlayedOnce) {
    Write();
    Write();
    WriteLoop(2, 3);
    Write();
    WriteLoop(1, 2);
    WriteLoop(3, 2);
    WriteLoop(1, 0);  // no count is once
    ExpectPlayed("ABCDCDCDEFFGHIGHIJ");
}

TEST_F(LoopTest, MarksThatMakeNoLoopAreIgnored) {
    Write(End, 9);  // an end without a beginning
    Write(0, 9);    // a count without marks
    Write(Begin, 2);
    Write(Begin, 5);  // a beginning inside a loop
    Write(End);
    Write(End);
    ExpectPlayed("ABCDECDEF");
}

TEST_F(LoopTest, ALoopMayBeWrittenWhileItPlays) {
    Write(Begin, 3);
    Write();
    Cards().Advance(Second);
    EXPECT_EQ(player_.DoneCount(), 0u) << "they have two more passes to come";
    Write(End);
    ExpectPlayed("ABCABCABC");
    Write();
    ExpectPlayed("D");
}

TEST_F(LoopTest, ABufferWrittenDuringTheLastPassFollowsIt) {
    for (unsigned completions = 0; completions <= 6; ++completions) {
        SCOPED_TRACE(completions);
        Reopen();
        WriteLoop(2, 3);
        AdvanceBuffers(completions);
        Write();
        ExpectPlayed("ABABABC");
        EXPECT_EQ(player_.DoneOrder(), std::vector<size_t>({0, 1, 2}));
    }
}

// The pass that is being handed to the card when the loop is broken is the last one. Four buffers
// ahead of what is heard, it is the one that holds the fifth next buffer.
class LoopBreakTest : public LoopTest {
protected:
    enum class Moment { Playing, Paused, Twice };

    void ExpectBroken(unsigned buffers, unsigned passes, unsigned completions, Moment moment) {
        SCOPED_TRACE(testing::Message() << buffers << " buffers, " << passes << " passes, broken after "
                                        << completions << ", moment " << static_cast<int>(moment));
        Reopen();
        WriteLoop(buffers, passes);
        Write();
        AdvanceBuffers(completions);
        if (moment == Moment::Paused) {
            EXPECT_EQ(waveOutPause(player_.Handle()), MMSYSERR_NOERROR);
        }
        Break();
        if (moment == Moment::Paused) {
            Cards().Advance(Second);
            EXPECT_EQ(waveOutRestart(player_.Handle()), MMSYSERR_NOERROR);
        } else if (moment == Moment::Twice) {
            Break();
        }
        const std::string letters = "ABCDEFG";
        const unsigned played = std::min(passes, (InFlight + completions) / buffers + 1);
        ExpectPlayed(Repeated(letters.substr(0, buffers), played) + letters[buffers]);
    }
};

TEST_F(LoopBreakTest, ABrokenLoopEndsWithItsPass) {
    struct Case {
        unsigned Buffers;
        unsigned Passes;
    };
    for (const Case& test : {Case{1, 9}, {3, 5}, {4, 3}, {6, 3}}) {
        for (unsigned completions = 0; completions < test.Buffers * test.Passes; ++completions) {
            for (const Moment moment : {Moment::Playing, Moment::Paused, Moment::Twice}) {
                ExpectBroken(test.Buffers, test.Passes, completions, moment);
            }
        }
    }
}

// Seven of six buffers have completed: the first one has been played for the last time already.
TEST_F(LoopBreakTest, ABufferThatHasNoPassLeftComesBackWithTheBreak) {
    WriteLoop(6, 3);
    AdvanceBuffers(7);
    EXPECT_EQ(player_.DoneCount(), 0u);
    Break();
    EXPECT_EQ(player_.DoneOrder(), std::vector<size_t>{0});
    ExpectPlayed("ABCDEFABCDEF");
}

TEST_F(LoopBreakTest, ALoopMayBeBrokenBeforeItsEndIsWritten) {
    for (const bool played : {false, true}) {
        SCOPED_TRACE(played);
        Reopen();
        Write(Begin, 3);
        Write();
        if (played) {
            Cards().Advance(Second);
        }
        Break();
        EXPECT_EQ(player_.DoneCount(), played ? 2u : 0u);
        Write(End);
        Write();
        ExpectPlayed("ABCD");
    }
}

TEST_F(LoopBreakTest, ABreakOutsideALoopDoesNothing) {
    Break();
    Write();
    Break();
    WriteLoop(2, 2);
    ExpectPlayed("ABCBC");
    Break();
}

TEST_F(LoopBreakTest, ABreakFromInsideACallbackEndsTheNextLoop) {
    player_.OnDone([this](WAVEHDR& header) {
        if (header.dwUser == 0) {
            Break();
        }
    });
    Write();
    WriteLoop(2, 100);
    Write();
    ExpectPlayed("ABCBCD");
}

// Each header that is several times in the card still comes back once; the rest is as after any reset.
TEST_F(LoopTest, AResetInsideALoopReturnsEachHeaderOnce) {
    for (const unsigned buffers : {1u, 2u, 3u, 6u}) {
        for (unsigned completions = 0; completions < 2 * buffers + 2; ++completions) {
            SCOPED_TRACE(testing::Message() << buffers << " buffers, " << completions << " played");
            Reopen();
            WriteLoop(buffers, 100);
            Write();
            AdvanceBuffers(completions);
            EXPECT_EQ(waveOutReset(player_.Handle()), MMSYSERR_NOERROR);
            Cards().Advance(1000);
            ExpectEachReturnedOnce();
            Cards().ForgetAudio();
            const std::string letters = "CDEFGHIJ";
            WriteLoop(1, 2);
            Write();
            ExpectPlayed({letters[buffers - 1], letters[buffers - 1], letters[buffers]});
            EXPECT_EQ(player_.Close(), MMSYSERR_NOERROR) << "nothing is in flight";
        }
    }
}

// Whether the card has its beginning already or not.
TEST_F(LoopTest, AResetForgetsALoopThatWasNotWrittenToItsEnd) {
    for (const unsigned before : {0u, 5u}) {
        SCOPED_TRACE(before);
        Reopen();
        for (unsigned i = 0; i < before; ++i) {
            Write();
        }
        Write(Begin, 3);
        EXPECT_EQ(waveOutReset(player_.Handle()), MMSYSERR_NOERROR);
        Cards().Advance(1000);
        Cards().ForgetAudio();
        Write();
        Write(End);
        ExpectPlayed(before == 0 ? "BC" : "GH");
    }
}

}  // namespace
