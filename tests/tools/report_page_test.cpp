// The page that --report writes. What a browser makes of it is script/check-report's business.
#include <numeric>
#include <regex>
#include <sstream>

#include "tests/tools/command_test.h"
#include "tests/tools/wav_bytes.h"

namespace {

class ReportPage : public CommandTest {
protected:
    ReportPage() { Write("in.wav", NoiseFile(20000)); }

    // What the command printed; its page is in page_.
    CommandResult Run(const std::string& words) {
        CommandResult result = Shell("$K " + words + " --time stepped --report out.html");
        page_ = Read("out.html");
        return result;
    }
    std::string Between(const std::string& begin, const std::string& end) const {
        const size_t from = page_.find(begin) + begin.size();
        return page_.substr(from, page_.find(end, from) - from);
    }
    std::string Losses() const { return Between("<section id=\"losses\"", "</section>"); }
    std::string Watched() const { return Between("id=\"watched\">\n", "\n</script>"); }
    // The numbers that stand behind a key in what was gathered, one for each time.
    std::vector<uint64_t> Numbers(const std::string& key) const {
        const std::string text = Watched();
        const std::regex number("\"" + key + "\": (\\d+)");
        std::vector<uint64_t> numbers;
        for (std::sregex_iterator at(text.begin(), text.end(), number), end; at != end; ++at) {
            numbers.push_back(std::stoull((*at)[1]));
        }
        return numbers;
    }

    std::string page_;
};

TEST_F(ReportPage, HoldsTheObjectThatJsonPrintsAndNamesNothingElsewhere) {
    const CommandResult result = Run("play in.wav --json --device 0,1");
    EXPECT_EQ(result.Status, 0) << result.Errors;
    EXPECT_EQ(Between("id=\"run\">\n", "</script>"), result.Output);
    EXPECT_NE(Losses().find("Nothing was lost."), std::string::npos) << Losses();
    EXPECT_EQ(Numbers("differences"), (std::vector<uint64_t>{0, 0}));
    const std::vector<uint64_t> counts = Numbers("count");
    const uint64_t requests = std::accumulate(counts.begin(), counts.end(), uint64_t{0});
    EXPECT_NE(result.Output.find("\"requests-sent\": " + std::to_string(requests) + ","), std::string::npos);
    EXPECT_FALSE(std::regex_search(page_, std::regex("<[a-z]+ [^>]*(src|href) *=|url\\(|@import")));
    EXPECT_NE(page_.find("default-src 'none'"), std::string::npos);
}

// A buffer of 2205 frames that the card never played, in the middle.
TEST_F(ReportPage, SaysWhatWasLostAndShowsWhere) {
    const CommandResult result = Run("play in.wav --fault QUEUE_BUFFER:3");
    EXPECT_EQ(result.Status, 1);
    std::string line;
    for (std::istringstream errors(result.Errors); std::getline(errors, line);) {
        EXPECT_NE(Losses().find("<li>" + line.substr(std::string("kestvox: ").size()) + "</li>"),
                  std::string::npos)
            << line;
    }
    EXPECT_NE(result.Errors, "");
    EXPECT_EQ(Losses().find("Nothing was lost."), std::string::npos);
    EXPECT_EQ(Numbers("differences"), std::vector<uint64_t>{2205});
    EXPECT_EQ(Numbers("first-difference"), std::vector<uint64_t>{2 * 2205});
    EXPECT_NE(Run("play in.wav --fault QUEUE_BUFFER:3 --tolerate").Status, 1);
    EXPECT_NE(Losses().find("and tolerated"), std::string::npos) << Losses();
    EXPECT_EQ(Run("play in.wav --fault completion:3:lost").Status, 1);
    EXPECT_NE(Losses().find("nothing moved for 5.1 s"), std::string::npos) << Losses();
}

// Every encoding that a device takes is read as the driver reads it. A coded bit stream has no samples.
TEST_F(ReportPage, FindsNoDifferenceInAnyEncoding) {
    for (const kestvox::SampleEncoding& encoding : kestvox::AllEncodings()) {
        if (encoding.ValidBits == 32) {
            continue;  // no device takes it
        }
        SCOPED_TRACE(encoding.Name);
        Write("any.wav", NoiseFile(5000, {kestvox::MakeFormat(encoding, 2, 44100)}));
        const CommandResult result = Run("play any.wav --device 1");
        EXPECT_EQ(result.Status, 0) << result.Errors;
        EXPECT_EQ(Numbers("differences"), std::vector<uint64_t>{0});
        EXPECT_EQ(Watched().find("\"compared\": true") != std::string::npos,
                  encoding.Tag != WAVE_FORMAT_DOLBY_AC3_SPDIF);
    }
}

// The last of two buffers comes back late, and the card has nothing to play meanwhile.
TEST_F(ReportPage, ShowsWhereTheCardHadNoBuffer) {
    const CommandResult result = Run("play in.wav --buffers 2 --fault completion:4:late=200000");
    ASSERT_EQ(result.Values("underruns"), std::vector<std::string>{"1"});
    EXPECT_NE(Watched().find("\"gaps\": [{\"frame\": " + result.Values("first-underrun").at(0) +
                             ", \"length\": " + result.Values("longest-underrun").at(0) + "}]"),
              std::string::npos);
    EXPECT_EQ(Numbers("differences"), std::vector<uint64_t>{0});
}

TEST_F(ReportPage, ComparesWhatComesBackThroughTheCable) {
    ASSERT_EQ(Run("loopback in.wav --lock").Status, 0);
    EXPECT_EQ(Numbers("differences"), (std::vector<uint64_t>{0, 0}));
    EXPECT_NE(Watched().find("\"kind\": \"recording\""), std::string::npos);
    EXPECT_EQ(Watched().find("\"compared\": false"), std::string::npos);
}

// Half a minute, and a loop that plays as long.
TEST_F(ReportPage, StaysSmallHoweverLongTheRunIs) {
    Write("long.wav", NoiseFile(30 * 8000, PcmFormat(8000, 1, 8)));
    Write("short.wav", NoiseFile(10000, PcmFormat(8000, 1, 8)));
    for (const char* words : {"play long.wav --buffer-ms 500", "play short.wav --loops 24"}) {
        const CommandResult result = Run(words);
        ASSERT_EQ(result.Status, 0) << result.Errors;
        EXPECT_LT(page_.size(), 300000u);
        EXPECT_EQ(Numbers("frames-per-column"), std::vector<uint64_t>{128});
        EXPECT_EQ(Numbers("differences"), std::vector<uint64_t>{0});
    }
}

}  // namespace
