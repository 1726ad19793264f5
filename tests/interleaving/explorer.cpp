#include "tests/interleaving/explorer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <functional>
#include <iterator>
#include <set>
#include <thread>

#include "tests/interleaving/card_view.h"
#include "tests/reliability/stride.h"
#include "tests/reliability/tally.h"

namespace interleaving {
namespace {

using simulator::RequestHold;

constexpr int64_t Millisecond = 1000;
constexpr int64_t Moment = 20 * Millisecond;  // in which a stream that runs is seen to move
constexpr int64_t LongPause = 1000 * Millisecond;
constexpr const char* BeganApart = "\n    began apart";
constexpr DWORD ShortHeader = Rate / 50;  // bytes
constexpr unsigned HeadersWithoutLoop = 3;
#ifdef _WIN32
constexpr unsigned ScriptStep = 3 * Stride;  // of all scripts, which are explored
#else
constexpr unsigned ScriptStep = Stride;
#endif
constexpr unsigned MostPlaces = Stride == 1 ? 12 : 6;  // where an act is held; of one with more, some
constexpr unsigned MostFindings = 30;                  // of one explorer, after which it stops

std::string FromEnvironment(const char* name) {
    const char* value = std::getenv(name);
    return value != nullptr ? value : "";
}

bool IsAsleep(Start from) {
    return from == Start::Asleep || from == Start::Dozing;
}

bool ClosesStream(const Act& act) {
    return act.What == Message::Close || act.What == Message::Shut;
}

bool Contains(const Script& script, Message message) {
    return std::any_of(script.Acts.begin(), script.Acts.end(),
                       [message](const Act& act) { return act.What == message; });
}

// What a stream answers that is being closed by somebody else is nobody's business.
bool AnswerCounts(const Script& script, size_t index) {
    for (size_t i = 0; i < script.Acts.size(); ++i) {
        const Act& other = script.Acts[i];
        const bool sameStream = ClosesStream(other) && other.Stream == script.Acts[index].Stream;
        if (i != index && (sameStream || other.What == Message::Free)) {
            return false;
        }
    }
    return true;
}

std::vector<HoldPoint> PlacesOf(unsigned requests, bool inCallback) {
    std::vector<HoldPoint> places;
    for (unsigned nth = 1; nth <= requests; ++nth) {
        for (const auto where : {RequestHold::Where::Before, RequestHold::Where::After}) {
            places.push_back({nth, where, inCallback});
        }
    }
    return places;
}

// The messages of all acts one after the other, in every order that keeps those of an act in theirs. The
// first order is that of the script.
std::vector<std::vector<SingleMessage>> Orders(const Script& script) {
    std::vector<size_t> order;
    for (size_t i = 0; i < script.Acts.size(); ++i) {
        order.insert(order.end(), PartsOf(script.Acts[i].What).size(), i);
    }
    std::vector<std::vector<SingleMessage>> all;
    do {
        std::vector<SingleMessage> messages;
        messages.reserve(order.size());
        std::map<size_t, size_t> sent;
        for (const size_t act : order) {
            messages.push_back({act, PartsOf(script.Acts[act].What)[sent[act]++]});
        }
        all.push_back(messages);
    } while (std::next_permutation(order.begin(), order.end()));
    return all;
}

// `most` of them: the last ones, where what has been prepared is set going, and the others spread over the
// rest, others for another `turn`.
std::vector<HoldPoint> Some(const std::vector<HoldPoint>& places, size_t most, unsigned turn) {
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

bool IsAskedFor(const std::string& what) {
    return FromEnvironment("KESTVOX_INTERLEAVINGS") == what;
}

Explorer::Explorer(const Setting& setting, std::vector<Side*> sides)
    : setting_(setting),
      sides_(std::move(sides)),
      filter_(FromEnvironment("KESTVOX_INTERLEAVING")),
      thorough_(IsAskedFor("all") || !filter_.empty()) {
    Join();
}

Explorer::~Explorer() {
    deadline_.Begin(std::string(setting_.Name) + ", unloading");
    Leave();
    deadline_.End();
    tally::Add("interleavings", run_);
    tally::Add("interleavings that went wrong", findings_);
}

void Explorer::Join() {
    for (Side* side : sides_) {
        side->Do(Step::Join, sides_.size() > 1 ? 1 : 0);
    }
}

void Explorer::Leave() {
    for (Side* side : sides_) {
        EXPECT_EQ(side->Do(Step::Leave), NothingLeft) << setting_.Name;
    }
}

std::string Explorer::Recipe(const Script& script, const std::string& place) const {
    std::string recipe = std::string(setting_.Name) + "/" + NameOf(script.From);
    for (size_t i = 0; i < script.Acts.size(); ++i) {
        recipe += script.InCallback == i ? "/callback:" : "/";
        recipe += NameOf(script.Acts[i], setting_) + (i == 0 ? place : "");
    }
    return recipe;
}

// Whether the recipe that is asked for may be one of the script's, wherever the first act is held.
bool Explorer::IsAskedForByName(const Script& script) const {
    const std::string name = Recipe(script, "#");
    const size_t place = name.find('#');
    if (!filter_.starts_with(name.substr(0, std::min(place, filter_.size())))) {
        return false;
    }
    const size_t others = filter_.find('/', place);
    return others == std::string::npos || name.substr(place + 1).starts_with(filter_.substr(others));
}

void Explorer::Explore(const Script& script) {
    if (IsEnough()) {
        return;
    }
    const bool skipped = !thorough_ && std::hash<std::string>()(Recipe(script, "")) % ScriptStep != 0;
    if (skipped || !IsAskedForByName(script)) {
        return;
    }
    unsigned requests = 0;
    const std::vector<std::string> serial = SerialOutcomes(script, &requests);
    if (serial.empty()) {
        return;  // what goes wrong in turn goes wrong at once
    }
    std::vector<HoldPoint> places = PlacesOf(requests, script.InCallback == 0);
    if (!thorough_ && places.size() > MostPlaces) {
        places = Some(places, MostPlaces, scripts_++);
    }
    for (const HoldPoint& place : places) {
        if (IsEnough() || !RunHeld(script, place, serial)) {
            return;
        }
    }
}

std::vector<std::string> Explorer::SerialOutcomes(const Script& script, unsigned* requests) {
    std::vector<std::string> outcomes;
    for (const std::vector<SingleMessage>& order : Orders(script)) {
        const std::string recipe =
            Recipe(script, outcomes.empty() ? ", one after the other" : ", in another order");
        deadline_.Begin(recipe);
        Prepare(script.From);
        unsigned counted = 0;
        const std::vector<int64_t> answers = SendInTurn(script, order, &counted);
        *requests = std::max(*requests, counted);
        const std::string outcome = Outcome(script, answers);
        deadline_.End();
        if (!Verdict(recipe, outcome, {outcome})) {
            return {};
        }
        outcomes.push_back(outcome);
    }
    return outcomes;
}

// False when its thread does not come so far.
bool Explorer::RunHeld(const Script& script, const HoldPoint& point, const std::vector<std::string>& serial) {
    const std::string recipe =
        Recipe(script, "@" + std::to_string(point.Nth) +
                           (point.Where == RequestHold::Where::Before ? "-before" : "-after"));
    if (!recipe.starts_with(filter_)) {
        return true;
    }
    deadline_.Begin(recipe);
    Prepare(script.From);
    Held held{point, false, 0};
    const std::vector<int64_t> answers = SendHeld(script, held);
    const std::string outcome = Outcome(script, answers);
    deadline_.End();
    if (!held.Met) {
        Verdict(recipe, outcome, {outcome});
        return true;
    }
    ++run_;
    Verdict(recipe, outcome, serial);
    return true;
}

// --- how it begins -------------------------------------------------------------------------------

void Explorer::Prepare(Start from) {
    deadline_.Reach("the streams are made ready");
    for (Side* side : sides_) {
        side->Do(Step::Renew);
    }
    const size_t open = from == Start::Partly ? 1 : setting_.Streams.size();
    for (unsigned stream = 0; stream < open; ++stream) {
        if (OwnerOf(stream).Do(Step::Open, stream, Rate) != MMSYSERR_NOERROR) {
            Fault("stream " + std::to_string(stream) + " cannot be opened to begin with");
        }
    }
    for (unsigned stream = 0; stream < open; ++stream) {
        PrepareStream(stream, from);
    }
    Advance(5 * Millisecond);
    if (IsAsleep(from)) {
        for (Side* side : sides_) {
            side->Do(Step::Send, static_cast<int64_t>(Message::Suspend));
        }
        sides_[0]->Do(Step::PowerCycle);
    }
    for (unsigned stream = 0; from == Start::Dozing && stream < open; ++stream) {
        OwnerOf(stream).Do(Step::Hand, stream, Stream::LongHeader);
        Send(Message::Start, stream);
    }
}

void Explorer::PrepareStream(unsigned stream, Start from) {
    Side& side = OwnerOf(stream);
    const bool output = setting_.Streams[stream].Output;
    if (from == Start::Fresh || from == Start::Dozing) {
        return;
    }
    if (from == Start::Ready && output) {
        Send(Message::Stop, stream);
    }
    if (from == Start::Ending && stream == 0) {
        side.Do(Step::Hand, stream, ShortHeader);
    }
    if (output && from != Start::Ending) {
        side.Do(Step::Hand, stream, Stream::LongHeader, WHDR_BEGINLOOP, 3);
        side.Do(Step::Hand, stream, Stream::LongHeader, WHDR_ENDLOOP, 0);
    }
    for (unsigned i = 0; i < HeadersWithoutLoop; ++i) {
        side.Do(Step::Hand, stream, Stream::LongHeader);
    }
    if (from != Start::Ready && !output) {
        Send(Message::Start, stream);
    }
    if (from == Start::Paused) {
        Send(Message::Stop, stream);
    }
}

// --- the messages --------------------------------------------------------------------------------

std::vector<int64_t> Explorer::SendInTurn(const Script& script, const std::vector<SingleMessage>& order,
                                          unsigned* requests) {
    deadline_.Reach("the messages are sent one after the other");
    std::vector<int64_t> answers(script.Acts.size());
    *requests = 0;
    bool first = true;
    for (const auto& [act, message] : order) {
        Side& side = *sides_[script.Acts[act].Program];
        const bool inCallback = first && script.InCallback == act;
        first = false;
        const HoldPoint never{.Nth = 0, .Where = RequestHold::Where::Before, .InCallback = inCallback};
        const auto thread = static_cast<int64_t>(act);
        side.Do(Step::Begin, thread, static_cast<int64_t>(message), script.Acts[act].Stream, never.Code());
        answers[act] = side.Do(Step::Await, thread);
        if (act == 0) {
            *requests += static_cast<unsigned>(side.Do(Step::Requests, thread));
        }
        Advance(script.Pause);
    }
    return answers;
}

std::vector<int64_t> Explorer::SendHeld(const Script& script, Held& held) {
    deadline_.Reach("the first message is on its way to where it is held");
    std::vector<int64_t> answers(script.Acts.size());
    Side& first = *sides_[script.Acts[0].Program];
    const auto begin = [this, &script](size_t i, const HoldPoint& point) {
        const Act& act = script.Acts[i];
        sides_[act.Program]->Do(Step::Begin, static_cast<int64_t>(i), static_cast<int64_t>(act.What),
                                act.Stream, point.Code());
    };
    begin(0, held.Point);
    held.Met = first.Do(Step::AwaitHeld, 0) != 0;
    for (Side* side : sides_) {
        if (held.Met && side != &first) {
            side->Do(Step::Elsewhere, 1);
        }
    }
    deadline_.Reach("the first message is held and the others are sent");
    for (size_t i = 1; i < script.Acts.size(); ++i) {
        HoldPoint never;
        never.InCallback = script.InCallback == i;
        begin(i, never);
        Side& side = *sides_[script.Acts[i].Program];
        side.Do(Step::AwaitDoneOrWaiting, static_cast<int64_t>(i));
        Advance(script.Pause);
        if (script.Pause >= LongPause) {  // what it waited for may be over
            side.Do(Step::AwaitDoneOrWaiting, static_cast<int64_t>(i));
        }
    }
    deadline_.Reach("the first message goes on");
    first.Do(Step::LetGo, 0);
    for (Side* side : sides_) {
        if (held.Met && side != &first) {
            side->Do(Step::Elsewhere, 0);
        }
    }
    for (size_t i = 0; i < script.Acts.size(); ++i) {
        answers[i] = sides_[script.Acts[i].Program]->Do(Step::Await, static_cast<int64_t>(i));
    }
    return answers;
}

// --- what has come of them ------------------------------------------------------------------------

// A stream that was closed from inside its callback is let go when the service thread comes to its end.
bool BecomesFree(const StreamPlan& plan) {
    constexpr int LongestWait = 2000;  // milliseconds
    for (int waited = 0; IsClaimed(plan); ++waited) {
        if (waited == LongestWait) {
            return false;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return true;
}

// The headers that a soft reset gives back come one after the other, and how many are back is a matter of
// time, as it is of those that are about to come back anyway.
bool CountsBuffers(const Script& script) {
    return script.From != Start::Ending && !Contains(script, Message::SoftReset);
}

std::string Explorer::Outcome(const Script& script, const std::vector<int64_t>& answers) {
    deadline_.Reach("all have answered");
    std::string outcome = "    answers";
    for (size_t i = 0; i < answers.size(); ++i) {
        outcome += AnswerCounts(script, i) ? " " + std::to_string(answers[i]) : " -";
    }
    AfterFree(script);
    // A start that a soft reset of the card cuts in two is left half done. What counts is that the next one
    // is whole.
    if (!Contains(script, Message::SoftReset)) {
        outcome += Snapshot(CountsBuffers(script));
    }
    outcome += WakeUp(script);
    if (script.From == Start::Dozing && outcome.find(BeganApart) != std::string::npos) {
        Fault("what was started during the sleep began apart after it");
    }
    deadline_.Reach("the streams are started again");
    ExpectRestart();
    deadline_.Reach("the streams are reset");
    ExpectAllBack();
    deadline_.Reach("the streams are started afresh");
    ExpectFreshStart();
    deadline_.Reach("the streams are closed");
    ExpectEnd();
    deadline_.Reach("a stream is opened at another rate");
    ExpectAnotherRate();
    return outcome;
}

void Explorer::AfterFree(const Script& script) {
    for (const Act& act : script.Acts) {
        if (act.What == Message::Free && sides_[act.Program]->Do(Step::Reload) != NothingLeft) {
            Fault("the driver left something behind when it was let go");
        }
    }
}

// A program sees by itself how far the clock has been moved by another.
void Explorer::Advance(int64_t microseconds) {
    for (Side* side : sides_) {
        side->Do(Step::Advance, side == sides_[0] ? microseconds : 0);
    }
}

std::vector<uint64_t> Explorer::MovedIn(int64_t microseconds) {
    std::vector<uint64_t> moved;
    for (const StreamPlan& plan : setting_.Streams) {
        moved.push_back(FramesMoved(plan));
    }
    Advance(microseconds);
    for (size_t i = 0; i < moved.size(); ++i) {
        moved[i] = FramesMoved(setting_.Streams[i]) - moved[i];
    }
    return moved;
}

std::string Explorer::Snapshot(bool buffers) {
    for (unsigned stream = 0; stream < setting_.Streams.size(); ++stream) {
        if (!IsOpen(stream)) {
            BecomesFree(setting_.Streams[stream]);
        }
    }
    const std::vector<uint64_t> moved = MovedIn(Moment);
    std::string text = DescribeCards(setting_, buffers);
    std::set<uint64_t> firstFrames;
    for (unsigned stream = 0; stream < moved.size(); ++stream) {
        text += "\n    stream " + std::to_string(stream) + (IsOpen(stream) ? " is open" : " is closed") +
                (moved[stream] != 0 ? " and moves" : " and silent");
        if (buffers && setting_.Streams[stream].Output) {
            text += ", has " + std::to_string(OwnerOf(stream).Do(Step::Away, stream)) + " headers";
        }
        if (moved[stream] != 0) {
            firstFrames.insert(FirstFrame(setting_.Streams[stream]));
        }
    }
    return firstFrames.size() > 1 ? text + BeganApart : text;
}

// Whether a stream of that program has been suspended.
bool Explorer::HasReleased(const Side& side) {
    for (unsigned stream = 0; stream < setting_.Streams.size(); ++stream) {
        if (&OwnerOf(stream) == &side && IsOpen(stream) && !IsAcquired(setting_.Streams[stream])) {
            return true;
        }
    }
    return false;
}

// A sleep that has begun for one program comes to all, and so does its end; a soft reset is followed by one.
std::string Explorer::WakeUp(const Script& script) {
    deadline_.Reach("the streams are woken up");
    std::vector<Side*> released;
    std::copy_if(sides_.begin(), sides_.end(), std::back_inserter(released),
                 [this](const Side* side) { return HasReleased(*side); });
    const bool softReset = Contains(script, Message::SoftReset);
    if (released.empty() && !softReset) {
        return "";
    }
    if (!IsAsleep(script.From) || softReset) {
        for (Side* side : sides_) {
            if (!HasReleased(*side)) {
                side->Do(Step::Send, static_cast<int64_t>(Message::Suspend));
            }
        }
        sides_[0]->Do(Step::PowerCycle);
        released = sides_;
    }
    for (Side* side : released) {
        side->Do(Step::Send, static_cast<int64_t>(Message::Resume));
    }
    return "\n    woken up:" + Snapshot(CountsBuffers(script));
}

void Explorer::ExpectRestart() {
    for (unsigned stream = 0; stream < setting_.Streams.size(); ++stream) {
        if (IsOpen(stream)) {
            if (OwnerOf(stream).Do(Step::Away, stream) == 0) {
                OwnerOf(stream).Do(Step::Hand, stream, Stream::LongHeader);
            }
            Send(Message::Start, stream);
        }
    }
    const std::vector<uint64_t> moved = MovedIn(Moment);
    for (unsigned stream = 0; stream < moved.size(); ++stream) {
        if (IsOpen(stream) && moved[stream] == 0) {
            Fault("stream " + std::to_string(stream) + " is silent, though all have been started");
        }
        if (IsOpen(stream) && setting_.Streams[stream].Output && OwnGain(setting_.Streams[stream]) == 0) {
            Fault("stream " + std::to_string(stream) + " plays with a gain of 0");
        }
    }
}

void Explorer::ExpectAllBack() {
    for (unsigned stream = 0; stream < setting_.Streams.size(); ++stream) {
        if (IsOpen(stream)) {
            Send(Message::Reset, stream);
        }
    }
    Advance(Millisecond);
    for (unsigned stream = 0; stream < setting_.Streams.size(); ++stream) {
        if (const int64_t away = OwnerOf(stream).Do(Step::Away, stream); away != 0) {
            Fault(std::to_string(away) + " headers of stream " + std::to_string(stream) +
                  " did not come back with a reset");
        }
    }
}

void Explorer::ExpectFreshStart() {
    std::set<uint64_t> counts;
    for (unsigned stream = 0; stream < setting_.Streams.size(); ++stream) {
        if (IsOpen(stream)) {
            OwnerOf(stream).Do(Step::Hand, stream, Stream::LongHeader);
            Send(Message::Start, stream);
        }
    }
    const std::vector<uint64_t> moved = MovedIn(Moment);
    for (unsigned stream = 0; stream < moved.size(); ++stream) {
        if (IsOpen(stream)) {
            counts.insert(moved[stream]);
            if (moved[stream] == 0) {
                Fault("stream " + std::to_string(stream) + " is silent after a reset and a start");
            }
        }
    }
    if (counts.size() > 1) {
        Fault("the streams do not start on one frame after a reset");
    }
}

void Explorer::ExpectEnd() {
    for (unsigned stream = 0; stream < setting_.Streams.size(); ++stream) {
        if (IsOpen(stream)) {
            if (const int64_t answer = Send(Message::Shut, stream); answer != MMSYSERR_NOERROR) {
                Fault("stream " + std::to_string(stream) + " answers its close with " +
                      std::to_string(answer));
            }
        }
        if (const int64_t away = OwnerOf(stream).Do(Step::Away, stream); away != 0) {
            Fault(std::to_string(away) + " headers of stream " + std::to_string(stream) +
                  " did not come back with its close");
        }
        if (const int64_t wrong = OwnerOf(stream).Do(Step::Misreturned, stream); wrong != 0) {
            Fault(std::to_string(wrong) + " headers of stream " + std::to_string(stream) +
                  " came back twice, or had not been accepted");
        }
        if (!BecomesFree(setting_.Streams[stream])) {
            Fault("the channel of stream " + std::to_string(stream) + " is not free after all");
        }
    }
    for (Side* side : sides_) {
        const int64_t left = side->Do(Step::Leftovers);
        if ((left & FilesOpen) != 0) {
            Fault("device files are left open");
        }
        if ((left & MemoryOrHandles) != 0) {
            Fault("memory, handles or threads are left");
        }
    }
}

void Explorer::ExpectAnotherRate() {
    Side& side = OwnerOf(0);
    if (const int64_t answer = side.Do(Step::Open, 0, OtherRate); answer != MMSYSERR_NOERROR) {
        Fault("another rate is refused with " + std::to_string(answer));
        return;
    }
    side.Do(Step::Hand, 0, Stream::LongHeader);
    Send(Message::Start, 0);
    if (MovedIn(Moment)[0] == 0) {
        Fault("a new stream is silent");
    }
    if (Send(Message::Shut, 0) != MMSYSERR_NOERROR) {
        Fault("a new stream cannot be closed");
    }
}

// What goes wrong once goes wrong often: the rest would tell nothing more.
bool Explorer::IsEnough() const {
    return !thorough_ && findings_ >= MostFindings;
}

void Explorer::Fault(const std::string& what) {
    faults_.push_back(what);
}

bool Explorer::Verdict(const std::string& recipe, const std::string& outcome,
                       const std::vector<std::string>& serial) {
    const bool agrees = std::find(serial.begin(), serial.end(), outcome) != serial.end();
    if (agrees && faults_.empty()) {
        return true;
    }
    ++findings_;
    std::string text = "KESTVOX_INTERLEAVING=\"" + recipe + "\"\n";
    for (const std::string& fault : faults_) {
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
    faults_.clear();
    deadline_.Begin(recipe + ", and then the driver is unloaded");
    for (Side* side : sides_) {
        side->Do(Step::Leave);
    }
    Join();
    deadline_.End();
    return false;
}

}  // namespace interleaving
