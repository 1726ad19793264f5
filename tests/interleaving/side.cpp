#include "tests/interleaving/side.h"

#include <chrono>

#ifndef _WIN32
#include <unistd.h>

#include <filesystem>
#include <fstream>
#endif

#include "tests/simulator/card_file.h"
#include "tests/support/driver_test.h"

namespace interleaving {
namespace {

using simulator::RequestHold;

constexpr int64_t NextHeader = 20000000;  // microseconds, within which it comes back

constexpr std::chrono::microseconds BetweenLooks(150);
constexpr unsigned QuietLooks = 6;  // in a row, after which a thread is taken to wait
constexpr unsigned MostLooks = 400;

// Whether another thread runs, or would if it had a processor. Windows does not say.
bool AnyoneRuns() {
#ifndef _WIN32
    const std::string self = std::to_string(gettid());
    std::error_code ended;
    for (const auto& thread : std::filesystem::directory_iterator("/proc/self/task", ended)) {
        std::string line;
        std::getline(std::ifstream(thread.path() / "stat"), line);
        const size_t name = line.rfind(')');
        if (thread.path().filename() != self && name != std::string::npos && line[name + 2] == 'R') {
            return true;
        }
    }
#endif
    return false;
}

}  // namespace

void Side::Join(bool shared) {
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
}

void Side::Load() {
    driver_.emplace();
    loaded_ = test_system::Usage();
    freed_ = false;
}

bool Side::Unload() {
    for (const auto& stream : streams_) {
        stream->Forget();
    }
    driver_.reset();
    return IsBackTo(unloaded_);
}

bool Side::Leave() {
    const bool nothingLeft = Unload();
    cards_.reset();
    return nothingLeft;
}

bool Side::Reload() {
    const bool nothingLeft = Unload();
    Load();
    return nothingLeft;
}

bool Side::IsBackTo(const std::string& usage) {
    return cards_->OpenFiles() == 0 && test_system::UsageComesTo(usage);
}

void Side::Renew() {
    streams_.clear();
    for (const StreamPlan& plan : setting_.Streams) {
        streams_.push_back(std::make_unique<Stream>(*driver_, plan));
    }
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

void Side::Begin(unsigned thread, Message message, unsigned stream, unsigned nth, bool after,
                 bool inCallback) {
    Actor& actor = actors_[thread];
    actor.Hold.emplace(nth, after ? RequestHold::Where::After : RequestHold::Where::Before);
    const auto act = [this, &actor, message, stream] {
        const RequestHold::Watch watch(*actor.Hold);
        actor.Answer = Send(message, stream);
    };
    if (!inCallback) {
        actor.Thread = std::async(std::launch::async, act);
        return;
    }
    // By whoever comes first: there is no callback when the stream does not run any more.
    const auto once = [act, sent = std::make_shared<std::atomic<bool>>(false)] {
        if (!sent->exchange(true)) {
            act();
        }
    };
    streams_[0]->OnNextDone(once);
    actor.Thread = std::async(std::launch::async, [this, once] {
        cards_->AdvanceToNextCompletion(NextHeader);
        once();
    });
}

bool Side::AwaitDoneOrWaiting(unsigned thread) {
    unsigned quiet = 0;
    for (unsigned look = 0; look < MostLooks && quiet < QuietLooks; ++look) {
        if (actors_[thread].Thread.wait_for(BetweenLooks) == std::future_status::ready) {
            return true;
        }
        quiet = AnyoneRuns() ? 0 : quiet + 1;
    }
    return false;
}

int64_t Side::Await(unsigned thread) {
    actors_[thread].Thread.wait();
    actors_[thread].Hold->AwaitHeldOrEnded();
    return actors_[thread].Answer;
}

void Side::PowerCycle() {
    for (unsigned card = 0; card < setting_.Cards; ++card) {
        cards_->PowerCycle(card);
    }
}

void Side::Elsewhere(bool held) {
    elsewhere_.reset();
    if (held) {
        elsewhere_.emplace();
    }
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
