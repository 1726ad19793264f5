#include "tests/interleaving/explorer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>

#include "tests/reliability/tally.h"

namespace interleaving {
namespace {

constexpr int64_t LongPause = 1000 * Scene::Millisecond;
#ifdef _WIN32
constexpr unsigned ScriptStep = 3 * Stride;  // of all scripts, which are explored
#else
constexpr unsigned ScriptStep = Stride;
#endif
constexpr size_t MostPlaces = Stride == 1 ? 12 : 6;  // where an act is held; of one with more, some
constexpr unsigned MostFindings = 30;                // of one explorer: what goes wrong once goes wrong often

// What a stream answers that is being closed by somebody else is nobody's business.
bool AnswerCounts(const Script& script, size_t index) {
    for (size_t i = 0; i < script.Acts.size(); ++i) {
        const Act& other = script.Acts[i];
        const bool closes = other.What == Message::Close || other.What == Message::Shut;
        const bool sameStream = closes && other.Stream == script.Acts[index].Stream;
        if (i != index && (sameStream || other.What == Message::Free)) {
            return false;
        }
    }
    return true;
}

// Before and after each request; of more than `most` places the last ones, where what has been prepared is
// set going, and others spread over the rest, others for another `turn`.
std::vector<HoldPoint> PlacesOf(unsigned requests, bool inCallback, size_t most, unsigned turn) {
    std::vector<HoldPoint> places;
    for (unsigned nth = 1; nth <= requests; ++nth) {
        for (const bool after : {false, true}) {
            places.push_back({nth, after, inCallback});
        }
    }
    if (places.size() <= most) {
        return places;
    }
    const size_t last = most / 2;
    const size_t spread = most - last;
    const size_t rest = places.size() - last;
    std::vector<HoldPoint> some;
    for (size_t i = 0; i < spread; ++i) {
        const size_t from = i * rest / spread;
        const size_t to = (i + 1) * rest / spread;
        some.push_back(places[from + turn % (to - from)]);
    }
    some.insert(some.end(), places.end() - static_cast<std::ptrdiff_t>(last), places.end());
    return some;
}

}  // namespace

Explorer::Explorer(const Setting& setting, std::vector<Line> sides, Piece piece)
    : setting_(setting),
      scene_(setting, std::move(sides)),
      piece_(piece),
      filter_(std::getenv("KESTVOX_INTERLEAVING")) {
    scene_.Join();
}

Explorer::~Explorer() {
    EXPECT_TRUE(scene_.Leave()) << setting_.Name << ": something was left behind";
    tally::Add("interleavings", run_);
    tally::Add("interleavings that went wrong", findings_);
}

std::string Explorer::Recipe(const Script& script, const std::string& place) const {
    std::string recipe = std::string(setting_.Name) + "/" + NameOf(script.From);
    for (size_t i = 0; i < script.Acts.size(); ++i) {
        recipe += script.InCallback == i ? "/callback:" : "/";
        recipe += NameOf(script.Acts[i], setting_) + (i == 0 ? place : "");
    }
    return recipe;
}

void Explorer::Explore(const Script& script) {
    const bool chosen = std::hash<std::string>()(Recipe(script, "")) % ScriptStep == 0;
    if (!(chosen || filter_ != nullptr) || !piece_.Has(scripts_++)) {
        return;
    }
    unsigned requests = 0;
    const std::vector<std::string> serial = SerialOutcomes(script, &requests);
    if (serial.empty()) {
        return;  // what goes wrong in turn goes wrong at once
    }
    const size_t most = filter_ != nullptr ? SIZE_MAX : MostPlaces;
    for (const HoldPoint& place : PlacesOf(requests, script.InCallback == 0, most, scripts_)) {
        RunHeld(script, place, serial);
    }
}

void Explorer::Prepare(const Script& script, const std::string& recipe) {
    if (filter_ != nullptr) {
        std::fprintf(stderr, "%s\n", recipe.c_str());
    }
    scene_.Prepare(script.From);
}

// The messages of all acts one after the other, in every order that keeps those of an act in theirs. The
// first order is that of the script.
std::vector<std::string> Explorer::SerialOutcomes(const Script& script, unsigned* requests) {
    std::vector<size_t> order;  // for each message its act
    for (size_t i = 0; i < script.Acts.size(); ++i) {
        order.insert(order.end(), PartsOf(script.Acts[i].What).size(), i);
    }
    std::vector<std::string> outcomes;
    do {
        const std::string recipe =
            Recipe(script, outcomes.empty() ? ", one after the other" : ", in another order");
        Prepare(script, recipe);
        outcomes.push_back(Outcome(script, SendInTurn(script, order, requests)));
        if (!Verdict(recipe, outcomes.back(), outcomes)) {
            return {};
        }
    } while (std::next_permutation(order.begin(), order.end()));
    return outcomes;
}

void Explorer::RunHeld(const Script& script, const HoldPoint& point, const std::vector<std::string>& serial) {
    const std::string recipe =
        Recipe(script, "@" + std::to_string(point.Nth) + (point.After ? "-after" : "-before"));
    if (findings_ >= MostFindings || (filter_ != nullptr && !recipe.starts_with(filter_))) {
        return;
    }
    Prepare(script, recipe);
    bool met = false;
    const std::string outcome = Outcome(script, SendHeld(script, point, &met));
    run_ += met ? 1 : 0;
    Verdict(recipe, outcome, met ? serial : std::vector{outcome});
}

void Explorer::Begin(const Script& script, size_t act, Message message, HoldPoint point) {
    SideOf(script, act)
        .Do<&Side::Begin>(act, message, script.Acts[act].Stream, point.Nth, point.After, point.InCallback);
}

std::vector<int64_t> Explorer::SendInTurn(const Script& script, const std::vector<size_t>& order,
                                          unsigned* requests) {
    std::vector<int64_t> answers(script.Acts.size());
    std::vector<size_t> sent(script.Acts.size());
    unsigned counted = 0;
    bool first = true;
    for (const size_t act : order) {
        const Message message = PartsOf(script.Acts[act].What)[sent[act]++];
        Begin(script, act, message, {.InCallback = std::exchange(first, false) && script.InCallback == act});
        answers[act] = SideOf(script, act).Do<&Side::Await>(act);
        if (act == 0) {
            counted += static_cast<unsigned>(SideOf(script, act).Do<&Side::Requests>(act));
        }
        scene_.Advance(script.Pause);
    }
    *requests = std::max(*requests, counted);
    return answers;
}

// `met` becomes whether its thread came to that request.
std::vector<int64_t> Explorer::SendHeld(const Script& script, const HoldPoint& point, bool* met) {
    Begin(script, 0, script.Acts[0].What, point);
    *met = SideOf(script, 0).Do<&Side::AwaitHeld>(0) != 0;
    scene_.TellOthers(script.Acts[0].Program, *met);
    for (size_t i = 1; i < script.Acts.size(); ++i) {
        Begin(script, i, script.Acts[i].What, {.InCallback = script.InCallback == i});
        SideOf(script, i).Do<&Side::AwaitDoneOrWaiting>(i);
        scene_.Advance(script.Pause);
        if (script.Pause >= LongPause) {  // what it waited for may be over
            SideOf(script, i).Do<&Side::AwaitDoneOrWaiting>(i);
        }
    }
    SideOf(script, 0).Do<&Side::LetGo>(0);
    scene_.TellOthers(script.Acts[0].Program, false);
    std::vector<int64_t> answers;
    for (size_t i = 0; i < script.Acts.size(); ++i) {
        answers.push_back(SideOf(script, i).Do<&Side::Await>(i));
    }
    return answers;
}

std::string Explorer::Outcome(const Script& script, const std::vector<int64_t>& answers) {
    std::string outcome = "    answers";
    for (size_t i = 0; i < answers.size(); ++i) {
        outcome += AnswerCounts(script, i) ? " " + std::to_string(answers[i]) : " -";
    }
    return outcome + scene_.Outcome(script.From, script.Acts);
}

bool Explorer::Verdict(const std::string& recipe, const std::string& outcome,
                       const std::vector<std::string>& serial) {
    const std::vector<std::string> faults = scene_.TakeFaults();
    const bool agrees = std::find(serial.begin(), serial.end(), outcome) != serial.end();
    if (agrees && faults.empty()) {
        return true;
    }
    ++findings_;
    std::string text = "KESTVOX_INTERLEAVING=\"" + recipe + "\"\n";
    for (const std::string& fault : faults) {
        text += "  " + fault + "\n";
    }
    text += "  It comes to this:\n" + outcome + "\n";
    if (!agrees) {
        text += "  The messages one after the other come to:\n";
        for (const std::string& expected : serial) {
            text += expected + "\n    --\n";
        }
    }
    ADD_FAILURE() << text;
    scene_.Leave();
    scene_.Join();
    return false;
}

}  // namespace interleaving
