// Whatever a story asks of the kernel or of the system fails once, each in its turn: the client gets its
// headers back, nothing stays behind, and the next client finds everything as it should be.
#include <algorithm>
#include <ostream>
#include <tuple>

#include "tests/reliability/story.h"
#include "tests/reliability/stride.h"
#include "tests/reliability/tally.h"

static void PrintTo(const Story& story, std::ostream* out) {
    *out << story.Name;
}

namespace {

using simulator::Fault;
using simulator::Port;
using simulator::TraceEntry;

// A story, and which of the requests or calls under it fail.
class EveryFailureTest : public DriverTest, public testing::WithParamInterface<std::tuple<Story, unsigned>> {
protected:
    EveryFailureTest() : DriverTest(2) {}
    ~EveryFailureTest() override { tally::Add(tally::Faults, faults_); }

    void SetUp() override {
        if (story_.Linked) {
            Follow(1, 0);
            StoreSetting(0, TEXT("Punchin"), 0);
            StoreSetting(0, TEXT("DitherADC"), 1);
        }
        Cards().SetDigitalInputRate(0, 44100);
    }

    // Tells the story once, and then what must be so whatever failed in it.
    void Tell(const DriverLibrary& driver) {
        Cast cast{.Cards = Cards(), .Driver = driver, .Output = {}, .Input = {}, .Follower = {}};
        story_.Tell(cast);
        told_ = Cards().Trace();
        played_ = Cards().Played(0, Port::Analog);
        Cards().ClearFaults();
        unmet_ = test_system::CallFailuresAreWaiting();
        test_system::ClearCallFailures();
        cast.ExpectBalance();
        for (unsigned channel = 0; channel < 8; ++channel) {
            EXPECT_FALSE(Cards().ChannelClaimed(channel / 4, channel % 4)) << channel;
        }
        EXPECT_EQ(Cards().OpenFiles(), 0u);
        UnloadDriver();
    }

    // The same, by a program that loads the driver for it, if it can.
    void TellAnew() {
        if (const DriverLibrary driver; driver.IsLoaded()) {
            Tell(driver);
        }
    }

    // A new client plays and records what it should, at a rate of its own.
    void ExpectAllIsWell() {
        const WaveFormat format = PcmFormat(96000, 2, 24);
        ExpectPlays(story_.Linked ? 2 : 0, format);
        const std::vector<simulator::Frame> signal = NoiseFrames(1024);
        Cards().PlugIn(0, Port::Analog, simulator::InputSignal::Run(signal));
        WaveRecorder recorder(0, format);
        EXPECT_EQ(recorder.Add(1024 * 6), MMSYSERR_NOERROR);
        EXPECT_EQ(recorder.Start(), MMSYSERR_NOERROR);
        Cards().Advance(20000);
        EXPECT_EQ(recorder.Close(), MMSYSERR_NOERROR);
        EXPECT_TRUE(recorder.Recorded() == ClientBytes(format, signal));
        UnloadDriver();
        Cards().ForgetAudio();
        Cards().ClearTrace();
        ++faults_;
    }

    const Story& story_ = std::get<0>(GetParam());
    std::vector<TraceEntry> told_;          // requests of the last telling
    std::vector<simulator::Frame> played_;  // ... what its output played
    bool unmet_ = false;                    // ... and whether the call that was to fail was never made
    unsigned faults_ = 0;
};

// A write to the card's registers that went wrong when the card was initialised is made good by the next
// wake-up, or when the driver is loaded anew.
bool IsOfInitialisation(const TraceEntry& request, const std::vector<TraceEntry>& discovery) {
    const std::string text = request.Text();
    return text.starts_with("write card") &&
           std::any_of(discovery.begin(), discovery.end(),
                       [&](const TraceEntry& entry) { return entry.Text() == text; });
}

constexpr unsigned Pieces = 8;

class EveryRequestTest : public EveryFailureTest {
protected:
    // Each of so many requests fails in each way, while `tell` tells the story. `usage`: what is to be left.
    void FailEach(size_t requests, const std::string& usage,
                  const std::function<void(Fault::Kind kind, unsigned nth)>& tell) {
        const Piece piece{std::get<1>(GetParam()), Pieces};
        for (const Fault::Kind kind : {Fault::Kind::Fail, Fault::Kind::Pend, Fault::Kind::Short}) {
            for (unsigned nth = 1; nth <= requests && !HasFailure(); nth += Stride) {
                if (piece.Has(nth / Stride)) {
                    SCOPED_TRACE(testing::Message() << simulator::FaultName(kind) << " of request " << nth
                                                    << " of " << requests);
                    Fail(Fault::AnyCode, nth, kind);
                    tell(kind, nth);
                    Cards().ClearFaults();
                    test_system::ExpectUsage(usage);
                    ExpectAllIsWell();
                }
            }
        }
    }
};

TEST_P(EveryRequestTest, FailsOnce) {
    const DriverLibrary driver;
    ASSERT_TRUE(driver.IsLoaded());
    const std::vector<TraceEntry> discovery = Cards().Trace();
    waveOutGetNumDevs();
    UnloadDriver();
    const std::string usage = test_system::Usage();
    Cards().ClearTrace();
    Tell(driver);
    const std::vector<TraceEntry> requests = told_;
    const std::vector<simulator::Frame> played = played_;
    ExpectAllIsWell();
    ASSERT_GT(requests.size(), 100u);
    FailEach(requests.size(), usage, [&](Fault::Kind kind, unsigned nth) {
        const bool isAnswered = !requests[nth - 1].Output.empty();
        if (kind == Fault::Kind::Short && !isAnswered) {
            return;
        }
        Tell(driver);
        if (told_.size() < nth) {
            return;  // the telling before had a few more, because it was the first
        }
        const TraceEntry& request = told_[nth - 1];
        SCOPED_TRACE(request.Text());
        if (kind == Fault::Kind::Pend && !isAnswered) {
            EXPECT_TRUE(played_ == played) << "pending is as good as done";
        }
        if (IsOfInitialisation(request, discovery)) {
            driver.DriverProc(DRV_POWER, PWR_SUSPENDREQUEST);
            driver.DriverProc(DRV_POWER, PWR_SUSPENDRESUME);
        }
    });
}

// What the driver asks of the kernel when it is loaded. One life is enough.
class DiscoveryFailureTest : public EveryRequestTest {};

TEST_P(DiscoveryFailureTest, OfARequest) {
    const std::string usage = test_system::Usage();
    waveOutGetNumDevs();
    const size_t requests = Cards().Trace().size();
    ASSERT_GT(requests, 20u);
    UnloadDriver();
    FailEach(requests, usage, [&](Fault::Kind, unsigned) { TellAnew(); });
}

// Calls that fail for want of memory or handles.
constexpr const char* Calls[] = {
    "HeapAlloc",      "GlobalAlloc",           "GlobalReAlloc", "GlobalLock",
    "CreateEventW",   "CreateThread",          "CreateFileW",   "CreateMutexW",
    "QueueUserAPC",   "WaitForSingleObjectEx", "RegOpenKeyExW", "RegCreateKeyW",
    "RegSetValueExW", "RegQueryValueExW",      "TlsAlloc",      "RegisterEventSourceW",
};

using EveryCallTest = EveryFailureTest;

TEST_P(EveryCallTest, FailsOnce) {
    const char* call = Calls[std::get<1>(GetParam())];
    const std::string usage = test_system::Usage();
    for (unsigned nth = 1; !unmet_ && !HasFailure(); nth += RoundStep) {
        SCOPED_TRACE(testing::Message() << call << " " << nth << " fails");
        test_system::FailCall(call, nth);
        TellAnew();
        test_system::ExpectUsage(usage);
        ExpectAllIsWell();
    }
}

const auto All = testing::ValuesIn(Stories().begin(), Stories().end());
const auto EachPiece = testing::Range(0u, Pieces);
const auto EachCall = testing::Range(0u, unsigned{std::size(Calls)});

INSTANTIATE_TEST_SUITE_P(Each, EveryRequestTest, testing::Combine(All, EachPiece));
INSTANTIATE_TEST_SUITE_P(Each, DiscoveryFailureTest,
                         testing::Combine(testing::Values(Stories().front()), EachPiece));
INSTANTIATE_TEST_SUITE_P(Each, EveryCallTest, testing::Combine(All, EachCall));

}  // namespace
