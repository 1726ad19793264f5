// Under each page of the configuration sheet, everything that the page asks of the card or of the system
// fails once: nothing stays behind, and the next sheet does all that its user wants.
#include <tuple>

#include "config_ui/resource.h"
#include "tests/reliability/stride.h"
#include "tests/reliability/tally.h"
#include "tests/support/clock_tree_user.h"
#include "tests/support/sheet_test.h"

namespace {

using simulator::Fault;

constexpr unsigned CardCount = 2;
constexpr unsigned PlaybackGain = 2;  // of the analog output into its own mixer

// What a user does on a page; `choice`, 0 or 1, decides what is to be stored afterwards.
void ChangeConfiguration(const SheetPage& page, int choice) {
    page.Type(IDC_NAME, choice == 0 ? u"Studio" : u"Stage");
    page.Click(choice == 0 ? IDC_PROFESSIONAL : IDC_CONSUMER);
    if (page.IsChecked(IDC_CHECK_CLOCKS) != (choice == 0)) {
        page.Click(IDC_CHECK_CLOCKS);
    }
}

void ChangeGain(const SheetPage& page, int choice) {
    page.Slide(IDC_FIRST_MIXER_SLIDER + 2 * static_cast<int>(PlaybackGain), choice == 0 ? 40 : 60);
}

void ChangeClocks(const SheetPage& page, int choice) {
    ClockTreeUser(page.Window()).Drag(u"B", choice == 0 ? u"A" : ClockTreeUser::Root);
}

void ChangeBufferSizes(const SheetPage& page, int choice) {
    page.Slide(IDC_ASIO_BUFFER, choice == 0 ? 100 : 200);
}

struct Visit {
    const char* Name;
    const char16_t* Title;
    void (*Change)(const SheetPage& page, int choice);
    bool Playing;  // meanwhile, on the first card
};
constexpr Visit Visits[] = {
    {"Configuration", u"Configuration", ChangeConfiguration, false},
    {"ConfigurationWhilePlaying", u"Configuration", ChangeConfiguration, true},
    {"Monitor", u"Monitor", ChangeGain, false},
    {"MonitorWhilePlaying", u"Monitor", ChangeGain, true},
    {"Clocks", u"Clocks", ChangeClocks, false},
    {"BufferSizes", u"ASIO", ChangeBufferSizes, false},
};

constexpr const char* Calls[] = {"HeapAlloc",     "GlobalAlloc",   "GlobalLock",
                                 "CreateEventW",  "CreateFileW",   "WaitForSingleObjectEx",
                                 "RegOpenKeyExW", "RegCreateKeyW", "RegQueryValueExW",
                                 "RegSetValueExW"};

constexpr unsigned Pieces = 3;

class SheetFailureTest : public SheetTest, public testing::WithParamInterface<std::tuple<size_t, unsigned>> {
protected:
    SheetFailureTest() : SheetTest(CardCount) {}
    ~SheetFailureTest() override { tally::Add(tally::Faults, faults_); }

    void SetUp() override {
        NameCards();
        StoreSetting(0, TEXT("AdvancedMonitoring"), 1);
        Library();
        if (visit_.Playing) {
            ASSERT_EQ(player_.Open(0, PcmFormat(44100, 2, 16)), MMSYSERR_NOERROR);
        }
        for (const int choice : {0, 1}) {
            Make(choice);
            wanted_[choice] = State();
        }
        ASSERT_NE(wanted_[0], wanted_[1]);
        usage_ = test_system::Usage();
    }

    // Opens the sheet, changes what there is on the page, presses Apply and OK.
    void Make(int choice) {
        Sheet sheet(Library());
        if (!sheet.IsOpen()) {
            return;
        }
        visit_.Change(sheet.Show(visit_.Title), choice);
        sheet.Apply();
        EXPECT_EQ(sheet.Accept(), DRVCNF_OK);
    }

    // What is stored, and what the card plays at.
    std::string State() {
        std::string state = std::to_string(Cards().MixerGain(0, PlaybackGain));
        const auto append = [&state](const std::u16string& key, const std::u16string& name) {
            const auto value = ReadRegistry(key, name);
            state += " " + testing::PrintToString(name) + "=";
            state += value ? testing::PrintToString(value->Bytes) : "";
        };
        for (unsigned card = 0; card < CardCount; ++card) {
            for (const char16_t* name :
                 {u"Name", u"Professional", u"CheckClocks", u"Monitor", u"ClockSource", u"Master"}) {
                append(ConfigKey(card), name);
            }
        }
        append(CommonKey, u"AsioBufferSize");
        return state;
    }

    // Whatever failed under a sheet, the next one is none the worse.
    void ExpectAllIsWell() {
        EXPECT_EQ(test_system::Usage(), usage_);
        ExpectMade(1);
        ++faults_;
    }

    void ExpectMade(int choice) {
        Make(choice);
        EXPECT_EQ(State(), wanted_[choice]);
    }

    const Visit& visit_ = Visits[std::get<0>(GetParam())];
    const Piece piece_{std::get<1>(GetParam()), Pieces};
    WavePlayer player_;
    unsigned faults_ = 0;

private:
    std::string wanted_[2];  // for each choice
    std::string usage_;
};

TEST_P(SheetFailureTest, OfARequest) {
    Cards().ClearTrace();
    Make(0);
    const size_t requests = Cards().Trace().size();
    for (const Fault::Kind kind : {Fault::Kind::Fail, Fault::Kind::Pend}) {
        for (unsigned nth = 1; nth <= requests && !HasFailure(); nth += Stride) {
            if (!piece_.Has(nth / Stride)) {
                continue;
            }
            SCOPED_TRACE(testing::Message() << "request " << nth << " of " << requests);
            Fail(Fault::AnyCode, nth, kind);
            Make(0);
            Cards().ClearFaults();
            ExpectAllIsWell();
        }
    }
    ExpectMade(0);
}

TEST_P(SheetFailureTest, OfACall) {
    for (size_t i = piece_.Number; i < std::size(Calls); i += Pieces) {
        const char* call = Calls[i];
        bool met = true;
        for (unsigned nth = 1; met && !HasFailure(); nth += Stride) {
            SCOPED_TRACE(testing::Message() << call << " " << nth << " fails");
            test_system::FailCall(call, nth);
            Make(0);
            met = !test_system::CallFailuresAreWaiting();
            test_system::ClearCallFailures();
            ExpectAllIsWell();
        }
    }
    ExpectMade(0);
}

INSTANTIATE_TEST_SUITE_P(Each, SheetFailureTest,
                         testing::Combine(testing::Range(size_t{0}, std::size(Visits)),
                                          testing::Range(0u, Pieces)),
                         [](const auto& told) {
                             return Visits[std::get<0>(told.param)].Name +
                                    std::to_string(std::get<1>(told.param));
                         });

}  // namespace
