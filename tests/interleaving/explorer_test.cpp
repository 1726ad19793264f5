// Every pair of control messages of one program, each held by each of its requests while the other is sent.
#include "tests/interleaving/explorer.h"

#include <gtest/gtest.h>

namespace interleaving {
namespace {

constexpr StreamPlan AnalogOut{.Output = true, .Card = 0, .Port = 0};
constexpr StreamPlan DigitalOut{.Output = true, .Card = 0, .Port = 1};
constexpr StreamPlan AnalogIn{.Output = false, .Card = 0, .Port = 0};
constexpr StreamPlan FollowerOut{.Output = true, .Card = 1, .Port = 0};

const Setting OneOutput{"one-output", 1, false, false, {AnalogOut}};
const Setting OneInput{"one-input", 1, false, false, {AnalogIn}};
const Setting TwoOutputs{"two-outputs", 1, false, false, {AnalogOut, DigitalOut}};
const Setting LinkedCards{"linked-cards", 2, true, false, {AnalogOut, FollowerOut}};
const Setting LockedInput{"locked-input", 1, false, true, {AnalogOut, AnalogIn}};

constexpr Message OfOutput[] = {Message::Write, Message::Start,    Message::Stop,
                                Message::Break, Message::Reset,    Message::Close,
                                Message::Shut,  Message::Position, Message::Volume};
constexpr Message OfInput[] = {Message::Write, Message::Start, Message::Stop,    Message::Reset,
                               Message::Close, Message::Shut,  Message::Position};
constexpr Message OfDriver[] = {Message::Suspend, Message::Resume, Message::Free, Message::SoftReset};

std::vector<Act> ActsOf(const Setting& setting, unsigned stream) {
    std::vector<Act> acts;
    if (setting.Streams[stream].Output) {
        for (const Message message : OfOutput) {
            acts.push_back({message, stream});
        }
    } else {
        for (const Message message : OfInput) {
            acts.push_back({message, stream});
        }
    }
    return acts;
}

std::vector<Act> DriverActs() {
    std::vector<Act> acts;
    for (const Message message : OfDriver) {
        acts.push_back({message, 0});
    }
    return acts;
}

std::vector<Act> Together(std::vector<Act> acts, const std::vector<Act>& more) {
    acts.insert(acts.end(), more.begin(), more.end());
    return acts;
}

// What a driver that is being let go still gets. The second message of an act would go to a stream that is
// gone.
bool MayFollow(const Act& held, const Act& other) {
    const bool lets = held.What == Message::Free || other.What == Message::Free;
    if (lets && (PartsOf(held.What).size() > 1 || PartsOf(other.What).size() > 1)) {
        return false;
    }
    // A stream that is opened in the middle of a resume belongs to the group from then on, so those that wake
    // after it wait for its start: neither order of the two says so.
    if (held.What == Message::Resume && other.What == Message::Open) {
        return false;
    }
    return held.What != Message::Free || (IsOfDriver(other.What) && other.What != Message::SoftReset);
}

void ExplorePairs(Explorer& explorer, Start from, const std::vector<Act>& held,
                  const std::vector<Act>& others) {
    for (const Act& first : held) {
        for (const Act& second : others) {
            if (MayFollow(first, second)) {
                explorer.Explore({from, {first, second}});
            }
        }
    }
}

void ExploreInCallback(Explorer& explorer, const std::vector<Act>& others) {
    for (const Message message :
         {Message::Write, Message::Start, Message::Stop, Message::Reset, Message::Shut}) {
        for (const Act& other : others) {
            const Act act = {message, 0};
            if (MayFollow(act, other) && MayFollow(other, act)) {
                explorer.Explore({Start::Ending, {act, other}, 0});
                explorer.Explore({Start::Ending, {other, act}, 1});
            }
        }
    }
}

class Interleaving : public testing::TestWithParam<Start> {};

TEST_P(Interleaving, OfOneOutput) {
    LocalSide side(OneOutput);
    Explorer explorer(OneOutput, {&side});
    const std::vector<Act> acts = Together(ActsOf(OneOutput, 0), DriverActs());
    ExplorePairs(explorer, GetParam(), acts, Together(acts, {{Message::WriteThree, 0}}));
}

TEST_P(Interleaving, OfOneInput) {
    LocalSide side(OneInput);
    Explorer explorer(OneInput, {&side});
    const std::vector<Act> acts = Together(ActsOf(OneInput, 0), DriverActs());
    ExplorePairs(explorer, GetParam(), acts, Together(acts, {{Message::WriteThree, 0}}));
}

constexpr auto NameOfStart = [](const auto& told) { return std::string(NameOf(told.param)); };

INSTANTIATE_TEST_SUITE_P(From, Interleaving,
                         testing::Values(Start::Fresh, Start::Playing, Start::Paused, Start::Asleep),
                         NameOfStart);

class InterleavingOfTwo : public testing::TestWithParam<Start> {
protected:
    static void Explore(const Setting& setting) {
        LocalSide side(setting);
        Explorer explorer(setting, {&side});
        const std::vector<Act> first = ActsOf(setting, 0);
        const std::vector<Act> second = ActsOf(setting, 1);
        if (GetParam() == Start::Dozing) {
            for (const unsigned stream : {0u, 1u}) {
                for (const Message message : {Message::Position, Message::Write, Message::Start}) {
                    explorer.Explore({GetParam(), {{Message::Resume, 0}, {message, stream}}});
                }
            }
            return;
        }
        if (GetParam() == Start::Partly) {
            const std::vector<Act> open = {{Message::Open, 1}};
            ExplorePairs(explorer, GetParam(), open, Together(Together(first, DriverActs()), open));
            ExplorePairs(explorer, GetParam(), Together(first, DriverActs()), open);
            return;
        }
        ExplorePairs(explorer, GetParam(), first, Together(second, DriverActs()));
        ExplorePairs(explorer, GetParam(), second, Together(first, DriverActs()));
        ExplorePairs(explorer, GetParam(), DriverActs(), Together(Together(first, second), DriverActs()));
    }
};

TEST_P(InterleavingOfTwo, StreamsOfACard) {
    Explore(TwoOutputs);
}

TEST_P(InterleavingOfTwo, LinkedCards) {
    Explore(LinkedCards);
}

TEST_P(InterleavingOfTwo, RecordingLockedToPlayback) {
    Explore(LockedInput);
}

INSTANTIATE_TEST_SUITE_P(From, InterleavingOfTwo,
                         testing::Values(Start::Ready, Start::Playing, Start::Asleep, Start::Dozing,
                                         Start::Partly),
                         NameOfStart);

TEST(InterleavingInACallback, OfOneOutput) {
    LocalSide side(OneOutput);
    Explorer explorer(OneOutput, {&side});
    ExploreInCallback(explorer, Together(ActsOf(OneOutput, 0), DriverActs()));
}

TEST(InterleavingInACallback, OfOneInput) {
    LocalSide side(OneInput);
    Explorer explorer(OneInput, {&side});
    ExploreInCallback(explorer, Together(ActsOf(OneInput, 0), DriverActs()));
}

TEST(InterleavingInACallback, OfTwoStreamsOfACard) {
    LocalSide side(TwoOutputs);
    Explorer explorer(TwoOutputs, {&side});
    ExploreInCallback(explorer, Together(ActsOf(TwoOutputs, 1), DriverActs()));
}

// A stream borrows another one's way to a card, that one goes, and a callback acts on the first.
class InterleavingOfThree : public testing::Test {
protected:
    static constexpr int64_t Millisecond = 1000;
    static constexpr int64_t LongWait = 6000000;  // microseconds, longer than a close waits for anything

    static void Explore(const Setting& setting, Start from, size_t inCallback, int64_t pause) {
        LocalSide side(setting);
        Explorer explorer(setting, {&side});
        for (const unsigned borrower : {0u, 1u}) {
            const unsigned lender = 1 - borrower;
            for (const Message held : {Message::Stop, Message::Start, Message::Shut}) {
                for (const Message after : {Message::Stop, Message::Shut, Message::Write}) {
                    explorer.Explore({from,
                                      {{held, borrower}, {Message::Shut, lender}, {after, borrower}},
                                      inCallback,
                                      pause});
                }
            }
        }
    }
};

TEST_F(InterleavingOfThree, ADeviceIsLentToOneThatIsHeld) {
    for (const Setting* setting : {&TwoOutputs, &LinkedCards}) {
        Explore(*setting, Start::Ready, Script::Nobody, Millisecond);
        Explore(*setting, Start::Ending, 2, Millisecond);
    }
}

TEST_F(InterleavingOfThree, ADeviceIsLentForLongToOneThatIsHeld) {
    Explore(TwoOutputs, Start::Ending, 2, LongWait);
}

// Takes long: KESTVOX_INTERLEAVINGS=three.
TEST_F(InterleavingOfThree, Messages) {
    if (!IsAskedFor("three")) {
        GTEST_SKIP() << "KESTVOX_INTERLEAVINGS is not \"three\"";
    }
    for (const Setting* setting : {&OneOutput, &OneInput, &TwoOutputs, &LinkedCards, &LockedInput}) {
        LocalSide side(*setting);
        Explorer explorer(*setting, {&side});
        std::vector<Act> acts = Together(ActsOf(*setting, 0), DriverActs());
        if (setting->Streams.size() > 1) {
            acts = Together(acts, ActsOf(*setting, 1));
        }
        for (const Start from : {Start::Playing, Start::Asleep}) {
            for (const Act& first : acts) {
                for (const Act& second : acts) {
                    for (const Act& third : acts) {
                        if (MayFollow(first, second) && MayFollow(first, third) &&
                            second.What != Message::Free) {
                            explorer.Explore({from, {first, second, third}});
                        }
                    }
                }
            }
        }
    }
}

}  // namespace
}  // namespace interleaving
