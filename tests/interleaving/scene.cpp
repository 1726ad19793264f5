#include "tests/interleaving/scene.h"

#include <algorithm>
#include <set>

#include "tests/interleaving/card_view.h"
#include "tests/support/wait.h"

namespace interleaving {
namespace {

constexpr int64_t Moment = 20 * Scene::Millisecond;  // in which a stream that runs is seen to move
constexpr const char* BeganApart = "\n    began apart";
constexpr DWORD ShortHeader = Rate / 50;  // bytes
constexpr unsigned HeadersWithoutLoop = 3;

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
        if (OwnerOf(stream).Do<&Side::Open>(stream, Rate) != MMSYSERR_NOERROR) {
            Fault(stream, "cannot be opened to begin with");
        }
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
        if (act.What == Message::Free && sides_[act.Program].Do<&Side::Reload>() == 0) {
            Fault("the driver left something behind when it was let go");
        }
    }
    // The headers that a soft reset gives back come one after the other, and how many are back is a matter of
    // time, as it is of those that are about to come back anyway. A start that it cuts in two is left half
    // done: what counts is that the next one is whole.
    const bool buffers = from != Start::Ending && !softReset;
    std::string outcome = softReset ? "" : Snapshot(buffers);
    outcome += WakeUp(from, softReset, buffers);
    if (from == Start::Dozing && outcome.find(BeganApart) != std::string::npos) {
        Fault("what was started during the sleep began apart after it");
    }
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
    std::string text = DescribeCards(setting_, buffers);
    std::set<uint64_t> firstFrames;
    for (unsigned stream = 0; stream < StreamCount(); ++stream) {
        text += "\n    stream " + std::to_string(stream) + (IsOpen(stream) ? " is open" : " is closed") +
                (moved[stream] != 0 ? " and moves" : " and silent");
        if (buffers && setting_.Streams[stream].Output) {
            text += ", has " + std::to_string(OwnerOf(stream).Do<&Side::Away>(stream)) + " headers";
        }
        if (moved[stream] != 0) {
            firstFrames.insert(ChannelOf(setting_.Streams[stream]).Tally.StartFrame);
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
        if (PlaysToBeginWith(from, stream) && !ended && moved[stream] == 0) {
            Fault(stream, "is silent, though nobody has stopped it");
        }
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
            if (moved[stream] == 0) {
                Fault(stream, "is silent, though all have been started");
            }
        }
    }
    if (afresh && counts.size() > 1) {
        Fault("the streams do not start on one frame after a reset");
    }
}

void Scene::ExpectAllBack() {
    for (unsigned stream = 0; stream < StreamCount(); ++stream) {
        if (IsOpen(stream)) {
            Send(Message::Reset, stream);
        }
    }
    Advance(Millisecond);
    for (unsigned stream = 0; stream < StreamCount(); ++stream) {
        if (const int64_t away = OwnerOf(stream).Do<&Side::Away>(stream); away != 0) {
            Fault(stream, "has kept " + std::to_string(away) + " headers over a reset");
        }
    }
}

void Scene::ExpectEnd() {
    for (unsigned stream = 0; stream < StreamCount(); ++stream) {
        if (const int64_t answer = IsOpen(stream) ? Send(Message::Shut, stream) : 0; answer != 0) {
            Fault(stream, "answers its close with " + std::to_string(answer));
        }
        if (const int64_t away = OwnerOf(stream).Do<&Side::Away>(stream); away != 0) {
            Fault(stream, "has kept " + std::to_string(away) + " headers over its close");
        }
        if (const int64_t wrong = OwnerOf(stream).Do<&Side::WrongCallbacks>(stream); wrong != 0) {
            Fault(stream, "told " + std::to_string(wrong) +
                              " times of headers that it did not have, or of a "
                              "close without an open");
        }
        if (!BecomesFree(setting_.Streams[stream])) {
            Fault(stream, "keeps its channel after all");
        }
    }
    for (Line& side : sides_) {
        if (side.Do<&Side::HasNothingLeft>() == 0) {
            Fault("device files, memory, handles or threads are left");
        }
    }
}

void Scene::ExpectAnotherRate() {
    if (const int64_t answer = OwnerOf(0).Do<&Side::Open>(0, OtherRate); answer != MMSYSERR_NOERROR) {
        Fault("another rate is refused with " + std::to_string(answer));
        return;
    }
    Hand(0);
    Send(Message::Start, 0);
    if (MovedIn(Moment)[0] == 0) {
        Fault("a new stream is silent");
    }
    if (Send(Message::Shut, 0) != MMSYSERR_NOERROR) {
        Fault("a new stream cannot be closed");
    }
}

}  // namespace interleaving
