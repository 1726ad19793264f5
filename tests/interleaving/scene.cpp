#include "tests/interleaving/scene.h"

#include <algorithm>
#include <set>

#include "simulator/machine/machine_state.h"
#include "tests/support/wait.h"

namespace interleaving {
namespace {

using simulator::CardState;
using simulator::ChannelState;
using simulator::Machine;
using simulator::host::MachineGuard;

constexpr int64_t Moment = 20 * Scene::Millisecond;  // in which a stream that runs is seen to move
constexpr const char* BeganApart = "\n    began apart";
constexpr DWORD ShortHeader = Rate / 50;  // bytes
constexpr unsigned HeadersWithoutLoop = 3;
constexpr unsigned GainsOfOutput[2][2] = {{2, 6}, {3, 7}};  // mixer inputs that a port's playback feeds

bool IsAsleep(Start from) {
    return from == Start::Asleep || from == Start::Dozing;
}

bool PlaysToBeginWith(Start from, unsigned stream) {
    return from == Start::Playing || from == Start::Asleep || (from == Start::Partly && stream == 0);
}

// Whether the act ends what the stream plays.
bool Ends(const Act& act, unsigned stream, const Setting& setting) {
    switch (act.What) {
    case Message::Free:
    case Message::SoftReset:
        return true;
    case Message::Stop:
    case Message::Reset:
    case Message::Close:
    case Message::Shut:
        return act.Stream == stream;
    case Message::Break:  // which stops an input
        return act.Stream == stream && !setting.Streams[stream].Output;
    default:
        return false;
    }
}

// --- what the cards are doing ----------------------------------------------------------------------------

ChannelState ChannelOf(const StreamPlan& plan) {
    const MachineGuard guard;
    return Machine().Cards[plan.Card].Channels[plan.Channel()];
}

// Whether the stream's channel is started, armed and held, at which rate and gains, and with `buffers` how
// many it has. Nothing that depends on when it is asked, and nothing of a port that nobody has open.
std::string Describe(const StreamPlan& plan, bool buffers) {
    const MachineGuard guard;
    const CardState& card = Machine().Cards[plan.Card];
    const ChannelState& channel = card.Channels[plan.Channel()];
    if (channel.Owner.Id == 0) {
        return "free";
    }
    if (!channel.Acquired) {
        return "released";
    }
    // A transfer moves nothing while the channel is disarmed, ends by itself when there is no buffer, and is
    // asked for again by every start: whether it is on then says nothing.
    std::string text = channel.Armed ? "armed" : "disarmed";
    if (channel.Armed && channel.Tally.BuffersInFlight != 0) {
        text += channel.TransferOn ? ", started" : ", stopped";
    }
    text += channel.Waiting ? " held" : "";
    text += ", " + std::to_string(card.ClockValid ? card.Clock.Rate : 0) + " Hz";
    if (!plan.Output) {
        return text;  // how many an input has filled follows from the time that passed
    }
    text += " at gains";
    for (const unsigned gain : GainsOfOutput[plan.Port]) {
        text += " " + std::to_string(card.MixerFile[gain]);
    }
    return buffers ? text + ", " + std::to_string(channel.Tally.BuffersInFlight) + " buffers" : text;
}

// A stream that was closed from inside its callback is let go when the service thread comes to its end.
bool BecomesFree(const StreamPlan& plan) {
    return ComesTrue([&plan] { return ChannelOf(plan).Owner.Id == 0; });
}

}  // namespace

void Scene::Join() {
    for (Line& side : sides_) {
        side.Do<&Side::Join>(sides_.size() > 1);
    }
}

bool Scene::Leave() {
    bool nothingLeft = true;
    for (Line& side : sides_) {
        nothingLeft &= side.Do<&Side::Leave>() != 0;
    }
    return nothingLeft;
}

// A program sees by itself how far the clock has been moved by another.
void Scene::Advance(int64_t microseconds) {
    for (Line& side : sides_) {
        side.Do<&Side::Advance>(&side == sides_.data() ? microseconds : 0);
    }
}

void Scene::TellOthers(unsigned program, bool held) {
    for (Line& side : sides_) {
        if (&side != &sides_[program]) {
            side.Do<&Side::Elsewhere>(held);
        }
    }
}

void Scene::Prepare(Start from) {
    for (Line& side : sides_) {
        side.Do<&Side::Renew>();
    }
    const unsigned open = from == Start::Idle ? 0 : from == Start::Partly ? 1 : StreamCount();
    for (unsigned stream = 0; stream < open; ++stream) {
        const int64_t answer = OwnerOf(stream).Do<&Side::Open>(stream, Rate);
        Expect(answer == MMSYSERR_NOERROR, stream, "cannot be opened to begin with");
    }
    for (unsigned stream = 0; stream < open; ++stream) {
        PrepareStream(stream, from);
    }
    Advance(5 * Millisecond);
    if (IsAsleep(from)) {
        for (Line& side : sides_) {
            side.Do<&Side::Send>(Message::Suspend, 0);
        }
        sides_[0].Do<&Side::PowerCycle>();
    }
    for (unsigned stream = 0; from == Start::Dozing && stream < open; ++stream) {
        Hand(stream);
        Send(Message::Start, stream);
    }
}

void Scene::PrepareStream(unsigned stream, Start from) {
    const bool output = setting_.Streams[stream].Output;
    if (from == Start::Fresh || from == Start::Dozing) {
        return;
    }
    if (from == Start::Ready && output) {
        Send(Message::Stop, stream);
    }
    if (from == Start::Ending && stream == 0) {
        Hand(stream, ShortHeader);
    }
    if (output && from != Start::Ending) {
        Hand(stream, Stream::LongHeader, WHDR_BEGINLOOP, 3);
        Hand(stream, Stream::LongHeader, WHDR_ENDLOOP, 0);
    }
    for (unsigned i = 0; i < HeadersWithoutLoop; ++i) {
        Hand(stream);
    }
    if (from != Start::Ready && !output) {
        Send(Message::Start, stream);
    }
    if (from == Start::Paused) {
        Send(Message::Stop, stream);
    }
}

std::vector<uint64_t> Scene::MovedIn(int64_t microseconds) {
    std::vector<uint64_t> moved;
    for (const StreamPlan& plan : setting_.Streams) {
        moved.push_back(ChannelOf(plan).Tally.FramesMoved);
    }
    Advance(microseconds);
    for (size_t i = 0; i < moved.size(); ++i) {
        moved[i] = ChannelOf(setting_.Streams[i]).Tally.FramesMoved - moved[i];
    }
    return moved;
}

std::string Scene::Outcome(Start from, const std::vector<Act>& acts) {
    bool softReset = false;
    for (const Act& act : acts) {
        softReset |= act.What == Message::SoftReset;
        Expect(act.What != Message::Free || sides_[act.Program].Do<&Side::Reload>() != 0,
               "the driver left something behind when it was let go");
    }
    // The headers that a soft reset gives back come one after the other, and how many are back is a matter of
    // time, as it is of those that are about to come back anyway. A start that it cuts in two is left half
    // done: what counts is that the next one is whole.
    const bool buffers = from != Start::Ending && !softReset;
    std::string outcome = softReset ? "" : Snapshot(buffers);
    outcome += WakeUp(from, softReset, buffers);
    Expect(from != Start::Dozing || outcome.find(BeganApart) == std::string::npos,
           "what was started during the sleep began apart after it");
    ExpectUndisturbed(from, acts);
    ExpectStart(false);
    ExpectAllBack();
    ExpectStart(true);
    ExpectEnd();
    ExpectAnotherRate();
    return outcome;
}

std::string Scene::Snapshot(bool buffers) {
    for (unsigned stream = 0; stream < StreamCount(); ++stream) {
        if (!IsOpen(stream)) {
            BecomesFree(setting_.Streams[stream]);
        }
    }
    const std::vector<uint64_t> moved = MovedIn(Moment);
    std::string text;
    std::set<uint64_t> firstFrames;
    for (unsigned stream = 0; stream < StreamCount(); ++stream) {
        const StreamPlan& plan = setting_.Streams[stream];
        text += "\n    stream " + std::to_string(stream) + (IsOpen(stream) ? " is open" : " is closed") +
                (moved[stream] != 0 ? " and moves, " : " and silent, ") + Describe(plan, buffers);
        if (buffers && plan.Output) {
            text += ", has " + std::to_string(OwnerOf(stream).Do<&Side::Away>(stream)) + " headers";
        }
        if (moved[stream] != 0) {
            firstFrames.insert(ChannelOf(plan).Tally.StartFrame);
        }
    }
    return firstFrames.size() > 1 ? text + BeganApart : text;
}

// A sleep that has begun for one program comes to all, and so does its end; a soft reset is followed by one.
std::string Scene::WakeUp(Start from, bool softReset, bool buffers) {
    std::vector<bool> released(sides_.size());  // programs with a stream that has been suspended
    for (unsigned stream = 0; stream < StreamCount(); ++stream) {
        const StreamPlan& plan = setting_.Streams[stream];
        if (IsOpen(stream) && !ChannelOf(plan).Acquired) {
            released[plan.Program] = true;
        }
    }
    const bool nobody = std::find(released.begin(), released.end(), true) == released.end();
    if (nobody && !softReset) {
        return "";
    }
    const bool newSleep = !IsAsleep(from) || softReset;
    for (unsigned program = 0; newSleep && program < sides_.size(); ++program) {
        if (!released[program]) {
            sides_[program].Do<&Side::Send>(Message::Suspend, 0);
        }
    }
    if (newSleep) {
        sides_[0].Do<&Side::PowerCycle>();
    }
    for (unsigned program = 0; program < sides_.size(); ++program) {
        if (newSleep || released[program]) {
            sides_[program].Do<&Side::Send>(Message::Resume, 0);
        }
    }
    return "\n    woken up:" + Snapshot(buffers);
}

// Whatever becomes of the others of its clock.
void Scene::ExpectUndisturbed(Start from, const std::vector<Act>& acts) {
    const std::vector<uint64_t> moved = MovedIn(Moment);
    for (unsigned stream = 0; stream < StreamCount(); ++stream) {
        const bool ended = std::any_of(acts.begin(), acts.end(),
                                       [&](const Act& act) { return Ends(act, stream, setting_); });
        Expect(!PlaysToBeginWith(from, stream) || ended || moved[stream] != 0, stream,
               "is silent, though nobody has stopped it");
    }
}

void Scene::ExpectStart(bool afresh) {
    for (unsigned stream = 0; stream < StreamCount(); ++stream) {
        if (IsOpen(stream)) {
            if (afresh || OwnerOf(stream).Do<&Side::Away>(stream) == 0) {
                Hand(stream);
            }
            Send(Message::Start, stream);
        }
    }
    const std::vector<uint64_t> moved = MovedIn(Moment);
    std::set<uint64_t> counts;
    for (unsigned stream = 0; stream < StreamCount(); ++stream) {
        if (IsOpen(stream)) {
            counts.insert(moved[stream]);
            Expect(moved[stream] != 0, stream, "is silent, though all have been started");
        }
    }
    Expect(!afresh || counts.size() <= 1, "the streams do not start on one frame after a reset");
}

void Scene::ExpectAllBack() {
    for (unsigned stream = 0; stream < StreamCount(); ++stream) {
        Send(Message::Reset, stream);
    }
    Advance(Millisecond);
    for (unsigned stream = 0; stream < StreamCount(); ++stream) {
        ExpectNoneAway(stream, "a reset");
    }
}

void Scene::ExpectNoneAway(unsigned stream, const std::string& over) {
    const int64_t away = OwnerOf(stream).Do<&Side::Away>(stream);
    Expect(away == 0, stream, "has kept " + std::to_string(away) + " headers over " + over);
}

void Scene::ExpectEnd() {
    for (unsigned stream = 0; stream < StreamCount(); ++stream) {
        const int64_t answer = IsOpen(stream) ? Send(Message::Shut, stream) : 0;
        Expect(answer == 0, stream, "answers its close with " + std::to_string(answer));
        ExpectNoneAway(stream, "its close");
        Expect(OwnerOf(stream).Do<&Side::WrongCallbacks>(stream) == 0, stream,
               "told of headers that it did not have, or of a close without an open");
        Expect(BecomesFree(setting_.Streams[stream]), stream, "keeps its channel after all");
    }
    for (Line& side : sides_) {
        Expect(side.Do<&Side::HasNothingLeft>() != 0, "device files, memory, handles or threads are left");
    }
}

void Scene::ExpectAnotherRate() {
    const int64_t answer = OwnerOf(0).Do<&Side::Open>(0, OtherRate);
    Expect(answer == MMSYSERR_NOERROR, "another rate is refused with " + std::to_string(answer));
    Hand(0);
    Send(Message::Start, 0);
    Expect(MovedIn(Moment)[0] != 0, "a new stream is silent");
    Expect(Send(Message::Shut, 0) == MMSYSERR_NOERROR, "a new stream cannot be closed");
}

}  // namespace interleaving
