// Completions that come late, again, out of their order, for headers that are gone, or never: none is
// believed that has no buffer in the card behind it, and no header waits for one that does not come.
#include <atomic>

#include "tests/reliability/answers.h"
#include "tests/reliability/stride.h"
#include "tests/reliability/tally.h"
#include "tests/support/output_test.h"

namespace {

class CompletionTest : public OutputTest {
protected:
    // "2:late=60000": of which completion, and what becomes of it.
    void Fail(const std::string& fault) {
        AddFault("completion:" + fault);
        tally::Add(tally::Faults, 1);
    }

    // After the close what is still on its way finds nothing any more.
    void ExpectNothingComes() {
        const unsigned done = player_.DoneCount();
        Cards().Advance(10 * Second);
        EXPECT_EQ(player_.DoneCount(), done);
    }
    void ExpectTheEnd() {
        if (player_.Close() == WAVERR_STILLPLAYING) {
            Always(player_.Reset());
            Always(player_.Close());
        }
        ExpectNothingComes();
        ExpectEachReturnedOnce();
        player_.OnDone(nullptr);
        player_.Forget();
        Cards().ClearFaults();
        Cards().ForgetAudio();
    }
};

TEST_F(CompletionTest, OutOfOrder) {
    Open();
    for (const char* fault : {"2:late=60000", "5:late=90000", "6:late=30000"}) {
        Fail(fault);
    }
    Write(20);
    Cards().Advance(2 * Second);
    const std::vector<size_t> order = player_.DoneOrder();
    EXPECT_EQ(order.size(), 20u);
    EXPECT_FALSE(std::is_sorted(order.begin(), order.end()));
    EXPECT_EQ(Played().size(), 20000u) << "the card was kept fed all the same";
    ExpectTheEnd();
}

// A client that hands each header in again meets the second completion of its last turn: whichever is
// believed, a turn ends once.
TEST_F(CompletionTest, DuplicateForAHeaderThatIsInTheCardAgain) {
    for (const char* fault : {"all:again=1000", "all:again=20000", "all:again=300000"}) {
        SCOPED_TRACE(fault);
        Open();
        std::atomic<unsigned> turns = 6;
        player_.OnDone([&](WAVEHDR& header) {
            if (turns < 300) {
                ++turns;
                Always(player_.HandIn(header));
            }
        });
        Fail(fault);
        Write(6, 400);
        Cards().Advance(10 * Second);
        EXPECT_EQ(turns.load(), 300u);
        EXPECT_EQ(player_.DoneCount(), turns.load());
        Always(player_.Close());
        ExpectNothingComes();
        player_.Forget();
        Cards().ClearFaults();
    }
}

// Those of the buffers that a reset took out of the card come after it: before, while or after the device
// closes.
TEST_F(CompletionTest, AfterTheReset) {
    const struct {
        const char* Fault;
        int64_t Pause;  // between reset and close
        bool Known;     // they are waited for
    } cases[] = {{"all:late=50000", 200 * Millisecond, true},
                 {"all:late=50000", 0, false},
                 {"all:late=5000000", 100 * Millisecond, false}};
    for (const auto& test : cases) {
        SCOPED_TRACE(&test - cases);
        Open();
        Fail(test.Fault);
        Write(20);
        Cards().Advance(10 * Millisecond);
        Always(player_.Reset());
        EXPECT_LT(player_.DoneCount(), 20u);
        Cards().Advance(test.Pause);
        EXPECT_EQ(player_.DoneCount() == 20, test.Known);
        ExpectTheEnd();
    }
}

// A header whose memory the client has given away while the card had it: it is not touched any more, what was
// copied for it is freed, and the others come back.
TEST_F(CompletionTest, ForAHeaderThatTheClientHasFreed) {
    Open();
    Write(2);
    std::vector<BYTE> data = Pattern(BufferSize);
    WAVEHDR* header = test_system::TakeHeader(BufferSize);
    header->lpData = reinterpret_cast<LPSTR>(data.data() + 1);
    header->dwBufferLength = BufferSize - 4;
    Always(waveOutWrite(player_.Handle(), header, sizeof *header));
    test_system::GiveBackPage(header);
    Cards().Advance(Second);
    EXPECT_EQ(player_.DoneCount(), 2u);
    EXPECT_EQ(player_.Close(), MMSYSERR_NOERROR) << "nothing is in the card";
    ExpectEachReturnedOnce();
}

// Many thousand in one wake-up, each of them twice, while the service thread is busy in a callback; with and
// without memory to collect them.
TEST_F(CompletionTest, ThousandsAtOnce) {
    constexpr unsigned Buffers = 5000 / RoundStep;  // at least two growths of the collection
    WaveFormat format = PcmFormat(44100, 2, 16);
    format.Basic().nAvgBytesPerSec = 0x7FFFFFFF;  // as many in the card as there are
    for (const unsigned failing : {0u, 1u, 2u}) {
        SCOPED_TRACE(testing::Message() << "allocation " << failing << " of their collection fails");
        Open(format);
        Fail("all:twice");
        player_.OnDone([&](WAVEHDR& header) {
            if (header.dwUser != 0) {
                return;
            }
            Always(player_.Reset());
            if (failing != 0) {
                test_system::FailCall("HeapAlloc", failing);
            }
        });
        Always(player_.Stop());
        Write(Buffers, 40);
        EXPECT_EQ(Output().BuffersInFlight, Buffers);
        Always(player_.Start());
        for (int i = 0; i < 100 && player_.DoneCount() < Buffers; ++i) {
            Cards().Advance(Second);  // waits for the service thread, but on a slow machine not until the end
        }
        EXPECT_EQ(player_.DoneCount(), Buffers);
        test_system::ClearCallFailures();
        ExpectTheEnd();
    }
}

}  // namespace
