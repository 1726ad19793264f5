#include "tests/interleaving/side.h"

#include "tests/simulator/card_file.h"
#include "tests/support/driver_test.h"

namespace interleaving {
namespace {

using simulator::RequestHold;

constexpr int64_t NextHeader = 20000000;  // microseconds, within which it comes back

}  // namespace

int64_t Side::Join(bool shared) {
    if (!shared) {
        test_system::FreshMachine();
    }
    // The first program of a machine brings its cards.
    cards_ = std::make_unique<simulator::Simulator>(
        simulator::Simulator::Options{setting_.Cards, simulator::TimeKind::Stepped});
    if (setting_.Linked) {
        DriverTest::Follow(1, 0);
    }
    for (unsigned card = 0; card < setting_.Cards; ++card) {
        DriverTest::StoreSetting(card, TEXT("Punchin"), setting_.LockToPlayback ? 0 : 1);
    }
    unloaded_ = test_system::Usage();
    Load();
    return 0;
}

void Side::Load() {
    driver_.emplace();
    loaded_ = test_system::Usage();
    freed_ = false;
}

int64_t Side::Unload() {
    for (const auto& stream : streams_) {
        stream->Forget();
    }
    driver_.reset();
    return LeftoversOver(unloaded_);
}

int64_t Side::Leave() {
    const int64_t left = Unload();
    cards_.reset();
    return left;
}

int64_t Side::Reload() {
    const int64_t left = Unload();
    Load();
    return left;
}

int64_t Side::LeftoversOver(const std::string& usage) {
    return (cards_->OpenFiles() != 0 ? FilesOpen : NothingLeft) +
           (test_system::UsageComesTo(usage) ? NothingLeft : MemoryOrHandles);
}

int64_t Side::Renew() {
    streams_.clear();
    for (const StreamPlan& plan : setting_.Streams) {
        streams_.push_back(std::make_unique<Stream>(*driver_, plan));
    }
    return 0;
}

int64_t Side::Send(Message message, unsigned stream) {
    if (freed_) {
        return MMSYSERR_NODRIVER;
    }
    switch (message) {
    case Message::Suspend:
        return driver_->DriverProc(DRV_POWER, PWR_SUSPENDREQUEST);
    case Message::Resume:
        return driver_->DriverProc(DRV_POWER, PWR_SUSPENDRESUME);
    case Message::Free:
        return Free();
    case Message::SoftReset:
        return simulator_tests::CardFile(0, simulator::ControlChannel).Request(simulator::SoftReset);
    default:
        return streams_[stream]->Send(message);
    }
}

// It is the driver's last message.
int64_t Side::Free() {
    const LRESULT answer = driver_->DriverProc(DRV_FREE);
    freed_ = true;
    for (const auto& stream : streams_) {
        stream->Orphan();
    }
    return answer;
}

int64_t Side::Begin(unsigned thread, Message message, unsigned stream, unsigned nth, bool after,
                    bool inCallback) {
    Actor& actor = actors_[thread];
    actor.Hold.emplace(nth, after ? RequestHold::Where::After : RequestHold::Where::Before);
    const auto act = [this, &actor, message, stream] {
        const RequestHold::Watch watch(*actor.Hold);
        actor.Answer = Send(message, stream);
    };
    if (!inCallback) {
        actor.Thread.Begin(act);
        return 0;
    }
    // By whoever comes first: there is no callback when the stream does not run any more.
    const auto once = [act, sent = std::make_shared<std::atomic<bool>>(false)] {
        if (!sent->exchange(true)) {
            act();
        }
    };
    streams_[0]->OnNextDone(once);
    actor.Thread.Begin([this, once] {
        cards_->AdvanceToNextCompletion(NextHeader);
        once();
    });
    return 0;
}

int64_t Side::AwaitHeld(unsigned thread) {
    return actors_[thread].Hold->AwaitHeldOrEnded() == RequestHold::State::Held ? 1 : 0;
}

int64_t Side::LetGo(unsigned thread) {
    actors_[thread].Hold->LetGo();
    return 0;
}

int64_t Side::AwaitDoneOrWaiting(unsigned thread) {
    return actors_[thread].Thread.AwaitDoneOrWaiting() ? 1 : 0;
}

int64_t Side::Await(unsigned thread) {
    actors_[thread].Thread.Await();
    actors_[thread].Hold->AwaitHeldOrEnded();
    return actors_[thread].Answer;
}

int64_t Side::Advance(int64_t microseconds) {
    cards_->Advance(microseconds);
    return 0;
}

int64_t Side::PowerCycle() {
    for (unsigned card = 0; card < setting_.Cards; ++card) {
        cards_->PowerCycle(card);
    }
    return 0;
}

int64_t Side::Elsewhere(bool held) {
    elsewhere_.reset();
    if (held) {
        elsewhere_.emplace();
    }
    return 0;
}

// A companion is a fork of the test, so an action is where it is there.
int64_t Line::Run(Action action, const Numbers& arguments) {
    if (side_ != nullptr) {
        return action(*side_, arguments);
    }
    companion_->Tell(reinterpret_cast<intptr_t>(action));
    for (const int64_t number : arguments) {
        companion_->Tell(number);
    }
    return companion_->Hear();
}

void Line::Serve(Companion& test, Side& side) {
    for (int64_t told = test.Hear(); told != Companion::Gone; told = test.Hear()) {
        Numbers arguments;
        for (int64_t& number : arguments) {
            number = test.Hear();
        }
        test.Tell(reinterpret_cast<Action>(static_cast<intptr_t>(told))(side, arguments));
    }
}

}  // namespace interleaving
