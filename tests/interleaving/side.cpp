#include "tests/interleaving/side.h"

#include <chrono>

#include "simulator/requests/protocol.h"
#include "tests/simulator/card_file.h"
#include "tests/support/driver_test.h"
#include "tests/support/system.h"

namespace interleaving {
namespace {

using simulator::RequestHold;

constexpr int64_t NextHeader = 20000000;             // microseconds, within which it comes back
constexpr std::chrono::seconds LongestThreadEnd(3);  // of a thread that has left the driver

// The way to the stored settings alone.
struct Stored : DriverTest {
    using DriverTest::Follow;
    using DriverTest::StoreSetting;
};

void StoreSettings(const Setting& setting) {
    if (setting.Linked) {
        Stored::Follow(1, 0);
    }
    for (unsigned card = 0; card < setting.Cards; ++card) {
        Stored::StoreSetting(card, TEXT("Punchin"), setting.LockToPlayback ? 0 : 1);
    }
}

// A thread that has left the driver ends a moment later.
bool ComesTo(const std::string& usage) {
    const auto start = std::chrono::steady_clock::now();
    while (test_system::Usage() != usage) {
        if (std::chrono::steady_clock::now() - start > LongestThreadEnd) {
            return false;
        }
        std::this_thread::yield();
    }
    return true;
}

MMRESULT SoftResetFirstCard() {
    return simulator_tests::CardFile(0, simulator::ControlChannel).Request(simulator::SoftReset);
}

}  // namespace

int64_t LocalSide::Do(Step step, int64_t a, int64_t b, int64_t c, int64_t d) {
    const auto number = static_cast<unsigned>(a);
    switch (step) {
    case Step::Join:
        Join(a != 0);
        return 0;
    case Step::Leave: {
        const int64_t left = Unload();
        cards_.reset();
        return left;
    }
    case Step::Reload: {
        const int64_t left = Unload();
        Load();
        return left;
    }
    case Step::Renew:
        streams_.clear();
        for (const StreamPlan& plan : setting_.Streams) {
            streams_.push_back(std::make_unique<Stream>(*driver_, plan));
        }
        return 0;
    case Step::Send:
        return Send(static_cast<Message>(a), static_cast<unsigned>(b));
    case Step::Open:
        return streams_[number]->Open(static_cast<DWORD>(b));
    case Step::Hand:
        return streams_[number]->Write(static_cast<DWORD>(b), static_cast<DWORD>(c), static_cast<DWORD>(d));
    case Step::Begin:
        Begin(actors_[number], static_cast<Message>(b), static_cast<unsigned>(c), HoldPoint::Of(d));
        return 0;
    case Step::AwaitHeld:
        return actors_[number].Hold->AwaitHeldOrEnded() == RequestHold::State::Held ? 1 : 0;
    case Step::LetGo:
        actors_[number].Hold->LetGo();
        return 0;
    case Step::AwaitDoneOrWaiting:
        return actors_[number].Thread.AwaitDoneOrWaiting() ? 1 : 0;
    case Step::Await:
        return Await(actors_[number]);
    case Step::Requests:
        return actors_[number].Hold->Requests();
    case Step::IsOpen:
        return streams_[number]->IsOpen() ? 1 : 0;
    case Step::Away:
        return streams_[number]->Away();
    case Step::Misreturned:
        return streams_[number]->Misreturned();
    case Step::Advance:
        cards_->Advance(a);
        return 0;
    case Step::PowerCycle:
        for (unsigned card = 0; card < setting_.Cards; ++card) {
            cards_->PowerCycle(card);
        }
        return 0;
    case Step::Leftovers:
        return LeftoversOver(loaded_);
    case Step::Elsewhere:
        elsewhere_.reset();
        if (a != 0) {
            elsewhere_.emplace();
        }
        return 0;
    case Step::End:
        break;
    }
    return 0;
}

void LocalSide::Join(bool shared) {
    if (!shared) {
        test_system::FreshMachine();
    }
    // The first program of a machine brings its cards.
    cards_ = std::make_unique<simulator::Simulator>(
        simulator::Simulator::Options{setting_.Cards, simulator::TimeKind::Stepped});
    StoreSettings(setting_);
    unloaded_ = test_system::Usage();
    Load();
}

void LocalSide::Load() {
    driver_.emplace();
    loaded_ = test_system::Usage();
    freed_ = false;
}

int64_t LocalSide::Unload() {
    for (const auto& stream : streams_) {
        stream->Forget();
    }
    driver_.reset();
    return LeftoversOver(unloaded_);
}

int64_t LocalSide::LeftoversOver(const std::string& usage) {
    const int64_t files = cards_->OpenFiles() != 0 ? FilesOpen : NothingLeft;
    const int64_t memory = ComesTo(usage) ? NothingLeft : MemoryOrHandles;
    return files + memory;
}

MMRESULT LocalSide::Send(Message message, unsigned stream) {
    if (freed_) {
        return MMSYSERR_NODRIVER;
    }
    switch (message) {
    case Message::Suspend:
        return static_cast<MMRESULT>(driver_->DriverProc(DRV_POWER, PWR_SUSPENDREQUEST));
    case Message::Resume:
        return static_cast<MMRESULT>(driver_->DriverProc(DRV_POWER, PWR_SUSPENDRESUME));
    case Message::Free:
        return Free();
    case Message::SoftReset:
        return SoftResetFirstCard();
    default:
        return streams_[stream]->Send(message);
    }
}

// It is the driver's last message.
MMRESULT LocalSide::Free() {
    const LRESULT answer = driver_->DriverProc(DRV_FREE);
    freed_ = true;
    for (const auto& stream : streams_) {
        stream->Orphan();
    }
    return static_cast<MMRESULT>(answer);
}

void LocalSide::Begin(Actor& actor, Message message, unsigned stream, HoldPoint hold) {
    actor.Hold.emplace(hold.Nth, hold.Where);
    if (hold.InCallback) {
        BeginInCallback(actor, message, stream);
        return;
    }
    actor.Thread.Begin([this, &actor, message, stream] {
        const RequestHold::Watch watch(*actor.Hold);
        actor.Answer = Send(message, stream);
    });
}

void LocalSide::BeginInCallback(Actor& actor, Message message, unsigned stream) {
    const auto came = std::make_shared<std::atomic<bool>>(false);
    streams_[0]->OnNextDone([this, &actor, message, stream, came] {
        *came = true;
        const RequestHold::Watch watch(*actor.Hold);
        actor.Answer = Send(message, stream);
    });
    actor.Thread.Begin([this, &actor, message, stream, came] {
        cards_->AdvanceToNextCompletion(NextHeader);
        if (!*came) {  // the stream does not run any more
            streams_[0]->OnNextDone(nullptr);
            const RequestHold::Watch watch(*actor.Hold);
            actor.Answer = Send(message, stream);
        }
    });
}

int64_t LocalSide::Await(Actor& actor) {
    actor.Thread.Await();
    actor.Hold->AwaitHeldOrEnded();
    return actor.Answer;
}

int64_t RemoteSide::Do(Step step, int64_t a, int64_t b, int64_t c, int64_t d) {
    for (const int64_t number : {static_cast<int64_t>(step), a, b, c, d}) {
        companion_.Tell(number);
    }
    return companion_.Hear();
}

void ServeSide(Companion& test, Side& side) {
    for (;;) {
        const auto step = test.Hear();
        if (step == Companion::Gone) {
            return;
        }
        int64_t told[4];
        for (int64_t& number : told) {
            number = test.Hear();
        }
        test.Tell(side.Do(static_cast<Step>(step), told[0], told[1], told[2], told[3]));
        if (static_cast<Step>(step) == Step::End) {
            return;
        }
    }
}

}  // namespace interleaving
