// The trace of a run, read back: what became of each header.
#include <algorithm>
#include <regex>
#include <sstream>

#include "tests/tools/command_test.h"
#include "tests/tools/wav_bytes.h"

namespace {

// One event; its other members are not of interest.
struct Event {
    std::string Phase;
    std::string Name;
    int64_t Time;
    std::string Line;
};

std::string Member(const std::string& line, const std::string& name) {
    std::smatch found;
    return std::regex_search(line, found, std::regex("\"" + name + "\":\"?([^\",}]*)")) ? found[1].str() : "";
}

class TraceOfARun : public CommandTest {
protected:
    TraceOfARun() { Write("in.wav", NoiseFile(44100)); }

    CommandResult Run(const std::string& words, unsigned buffers = 5) {
        CommandResult result = Shell("$K " + words + " --time stepped --buffers " + std::to_string(buffers) +
                                     " --buffer-ms 100 --trace t.json");
        events_.clear();
        std::istringstream lines(Read("t.json"));
        for (std::string line; std::getline(lines, line);) {
            if (line.starts_with("{\"ph\"")) {
                events_.push_back(
                    {Member(line, "ph"), Member(line, "name"), std::stoll("0" + Member(line, "ts")), line});
            }
        }
        return result;
    }
    // Those of a name, or those of a category about the header with that id, in the order of the file.
    std::vector<Event> Named(const std::string& name) const {
        std::vector<Event> found;
        std::ranges::copy_if(events_, std::back_inserter(found),
                             [&](const Event& event) { return event.Name == name; });
        return found;
    }
    std::vector<Event> Of(const std::string& category, const std::string& id) const {
        std::vector<Event> found;
        std::ranges::copy_if(events_, std::back_inserter(found), [&](const Event& event) {
            return Member(event.Line, "id") == id && Member(event.Line, "cat") == category;
        });
        return found;
    }
    // The header's bars, as "b NAME" and "e NAME".
    std::vector<std::string> LifeOf(const std::string& id) const {
        std::vector<std::string> life;
        for (const Event& event : Of("header", id)) {
            life.push_back(event.Phase + " " + event.Name);
        }
        return life;
    }
    int64_t TimeOf(const std::string& id, const std::string& phase, const std::string& name) const {
        for (const Event& event : Of("header", id)) {
            if (event.Phase == phase && event.Name == name) {
                return event.Time;
            }
        }
        return -1;
    }
    std::vector<int64_t> Counts(const std::string& counter, const std::string& what) const {
        std::vector<int64_t> counts;
        for (const Event& event : Named(counter)) {
            EXPECT_EQ(event.Phase, "C");
            counts.push_back(std::stoll(Member(event.Line, what)));
        }
        return counts;
    }

    std::vector<Event> events_;
};

using Life = std::vector<std::string>;

Life WholeLife(const std::string& header) {
    return {"b " + header,        "b BEGIN_BUFFER",      "e BEGIN_BUFFER",      "b MAP_BUFFER 17640",
            "e MAP_BUFFER 17640", "b SET_BUFFER_COOKIE", "e SET_BUFFER_COOKIE", "b QUEUE_BUFFER 0",
            "e QUEUE_BUFFER 0",   "b in the card",       "e in the card",       "e " + header};
}

// Channel 2 is the analog output. The third buffer is in the card while it and the two before it play.
TEST_F(TraceOfARun, FollowsAHeaderByItsNumber) {
    const CommandResult result = Run("play in.wav");
    ASSERT_EQ(result.Status, 0) << result.Errors;
    const std::string id = "0.2.3";
    EXPECT_EQ(LifeOf(id), WholeLife("header 3"));
    const int64_t begun = TimeOf(id, "b", "in the card");
    EXPECT_EQ(TimeOf(id, "b", "header 3"), begun);
    EXPECT_NEAR(static_cast<double>(TimeOf(id, "e", "in the card") - begun), 300000, 2);
    EXPECT_EQ(TimeOf(id, "e", "header 3"), TimeOf(id, "e", "in the card"));
    EXPECT_EQ(LifeOf("0.2.10"), WholeLife("header 10"));
    EXPECT_TRUE(LifeOf("0.2.11").empty()) << "there are ten";

    const std::vector<int64_t> inCard = Counts("analog out: headers", "in the card");
    const std::vector<int64_t> withDriver = Counts("analog out: headers", "with the driver");
    ASSERT_FALSE(inCard.empty());
    EXPECT_EQ(std::to_string(std::ranges::max(inCard)), result.Values("most-in-flight").at(0));
    EXPECT_EQ(std::ranges::max(withDriver), 5);
    EXPECT_EQ(inCard.back(), 0);
    EXPECT_EQ(withDriver.back(), 0);
}

// The fourth buffer comes back 200 ms late, and the other one is over by then.
TEST_F(TraceOfARun, MarksWhereTheCardRanDry) {
    const CommandResult result = Run("play in.wav --fault completion:4:late=200000", 2);
    const std::vector<Event> marks = Named("ran dry");
    EXPECT_EQ(std::to_string(marks.size()), result.Values("underruns").at(0));
    ASSERT_FALSE(marks.empty());
    EXPECT_EQ(marks[0].Phase, "i");
    EXPECT_EQ(marks[0].Time, TimeOf("0.2.5", "e", "in the card"));
    EXPECT_EQ(Member(marks[0].Line, "microseconds"), "100000");

    Run("play in.wav");
    EXPECT_TRUE(Named("ran dry").empty()) << "the end of the sound is none";
}

// The call is the client's thread's, and brings the buffer to the card; the callback is a thread's of the
// driver.
TEST_F(TraceOfARun, LeadsFromThreadToThread) {
    ASSERT_EQ(Run("play in.wav").Status, 0);
    const std::vector<Event> arrows = Of("flow", "0.2.3");
    ASSERT_EQ(arrows.size(), 3u);
    const char* const spans[] = {"bring header 3", "hand over header 3", "callback of header 3"};
    for (size_t i = 0; i < arrows.size(); ++i) {
        EXPECT_EQ(arrows[i].Phase, std::string(1, "stf"[i]));
        const Event span = Named(spans[i]).at(0);
        EXPECT_EQ(span.Time, arrows[i].Time) << spans[i];
        for (const char* where : {"pid", "tid"}) {
            EXPECT_EQ(Member(span.Line, where), Member(arrows[i].Line, where)) << spans[i];
        }
    }
    EXPECT_EQ(Member(arrows[1].Line, "tid"), Member(arrows[0].Line, "tid"));
    EXPECT_NE(Member(arrows[2].Line, "tid"), Member(arrows[0].Line, "tid"));
    EXPECT_EQ(std::ranges::count(events_, "B", &Event::Phase),
              std::ranges::count(events_, "E", &Event::Phase));
}

TEST_F(TraceOfARun, MarksFaultsAndSleeps) {
    Run("play in.wav --fault QUEUE_BUFFER:3 --fault completion:4:late=1000 --suspend-at 0.5");
    const auto marks = [&](const std::string& name) {
        std::vector<std::string> tracks;
        for (const Event& event : Named(name)) {
            EXPECT_EQ(event.Phase, "i");
            tracks.push_back(Member(event.Line, "pid") + "." + Member(event.Line, "tid"));
        }
        return tracks;
    };
    EXPECT_EQ(marks("fault: fail"), std::vector<std::string>{"0.2"});
    EXPECT_EQ(marks("fault: late"), std::vector<std::string>{"0.2"});
    EXPECT_EQ(marks("lost its power"), std::vector<std::string>{"0.4"}) << "of the card's own track";
    const Event asleep = Named("asleep").at(0);
    EXPECT_EQ(Member(asleep.Line, "tid"), "4");
    EXPECT_EQ(Member(asleep.Line, "dur"), "100000");
}

TEST_F(TraceOfARun, SaysWhatAWriteMeans) {
    Run("play in.wav");
    const auto meaning = [this](const char* write) { return Member(Named(write).at(0).Line, "means"); };
    EXPECT_EQ(meaning("write card 17 = 01 / 01"), "clock control: hold=1");
    EXPECT_EQ(meaning("write port 0 = 40 / C0"), "port control: sample format=1");
    EXPECT_EQ(meaning("write card 2 = 80 / FF"), "mixer gain: 80");
    EXPECT_EQ(meaning("QUEUE_BUFFER 0"), "");
}

// Headers that the card refuses or never tells of, and a loop, whose headers are in the card again and again.
TEST_F(TraceOfARun, FollowsHeadersThatGoOtherWays) {
    Run("play in.wav --fault QUEUE_BUFFER:3");
    Life refused = WholeLife("header 3");
    std::erase(refused, "b in the card");
    std::erase(refused, "e in the card");
    EXPECT_EQ(LifeOf("0.2.3"), refused);

    ASSERT_EQ(Run("play in.wav --loops 3").Status, 0);
    EXPECT_EQ(std::ranges::count(LifeOf("0.2.4"), "b in the card"), 3);
    EXPECT_EQ(std::ranges::count(LifeOf("0.2.4"), "e in the card"), 3);
    EXPECT_EQ(LifeOf("0.2.4").back(), "e header 4");

    ASSERT_EQ(Run("record out.wav --device 1 --input tone:440 --seconds 1").Status, 0);
    EXPECT_EQ(LifeOf("0.1.2").front(), "b header 2");
    EXPECT_EQ(LifeOf("0.1.2").back(), "e header 2");
    EXPECT_EQ(std::ranges::count(LifeOf("0.1.2"), "e in the card"), 1);
    for (const char* what : {"in the card", "with the driver"}) {
        EXPECT_EQ(Counts("digital in: headers", what).back(), 0);
    }
}

}  // namespace
