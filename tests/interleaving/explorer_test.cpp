// Every pair of control messages of one program, each held by each of its requests while the other is sent.
#include "tests/interleaving/explorer.h"

#include <gtest/gtest.h>

#include <initializer_list>

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

using Acts = std::vector<Act>;

Acts ActsOf(unsigned stream, std::initializer_list<Message> messages) {
    Acts acts;
    for (const Message message : messages) {
        acts.push_back({message, stream});
    }
    return acts;
}

Acts ActsOf(const Setting& setting, unsigned stream) {
    using enum Message;
    return setting.Streams[stream].Output
               ? ActsOf(stream, {Write, Start, Stop, Break, Reset, Close, Shut, Position, Volume})
               : ActsOf(stream, {Write, Start, Stop, Reset, Close, Shut, Position});
}

const Acts OfDriver = ActsOf(0, {Message::Suspend, Message::Resume, Message::Free, Message::SoftReset});

Acts operator+(Acts acts, const Acts& more) {
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
    return held.What != Message::Free || (IsOfDriver(other.What) && other.What != Message::SoftReset);
}

void ExplorePairs(Explorer& explorer, Start from, const Acts& held, const Acts& others) {
    for (const Act& first : held) {
        for (const Act& second : others) {
            if (MayFollow(first, second)) {
                explorer.Explore({from, {first, second}});
            }
        }
    }
}

// --- the sweeps ------------------------------------------------------------------------------------------

void PairsOfOne(Explorer& explorer, const Setting& setting, Start from) {
    const Acts acts = ActsOf(setting, 0) + OfDriver;
    ExplorePairs(explorer, from, acts, acts + ActsOf(0, {Message::WriteThree}));
}

void PairsOfTwo(Explorer& explorer, const Setting& setting, Start from) {
    const Acts first = ActsOf(setting, 0);
    const Acts second = ActsOf(setting, 1);
    ExplorePairs(explorer, from, first, second + OfDriver);
    ExplorePairs(explorer, from, second, first + OfDriver);
    ExplorePairs(explorer, from, OfDriver, first + second + OfDriver);
}

void WakingUp(Explorer& explorer, const Setting&, Start from) {
    for (const unsigned stream : {0u, 1u}) {
        ExplorePairs(explorer, from, ActsOf(0, {Message::Resume}),
                     ActsOf(stream, {Message::Position, Message::Write, Message::Start}));
    }
}

// The computer sleeps and wakes up meanwhile.
void OpenOverASleep(Explorer& explorer, Start from) {
    explorer.Explore({from, {{Message::Open, 1}, {Message::Suspend, 0}, {Message::Resume, 0}}});
}

void Opening(Explorer& explorer, const Setting& setting, Start from) {
    const Acts open = ActsOf(1, {Message::Open, Message::OpenApart});
    const Acts others = ActsOf(setting, 0) + OfDriver;
    ExplorePairs(explorer, from, open, others + open);
    ExplorePairs(explorer, from, others, open);
    OpenOverASleep(explorer, from);
}

void FirstOpens(Explorer& explorer, const Setting&, Start from) {
    const Acts opens[] = {ActsOf(0, {Message::Open}), ActsOf(1, {Message::Open, Message::OpenApart})};
    ExplorePairs(explorer, from, opens[0], opens[1]);
    ExplorePairs(explorer, from, opens[1], opens[0]);
    OpenOverASleep(explorer, from);
}

void InCallback(Explorer& explorer, const Setting& setting, Start from) {
    const auto stream = static_cast<unsigned>(setting.Streams.size() - 1);
    for (const Act& act :
         ActsOf(0, {Message::Write, Message::Start, Message::Stop, Message::Reset, Message::Shut})) {
        for (const Act& other : ActsOf(setting, stream) + OfDriver) {
            if (MayFollow(act, other) && MayFollow(other, act)) {
                explorer.Explore({from, {act, other}, 0});
                explorer.Explore({from, {other, act}, 1});
            }
        }
    }
}

// A stream borrows another one's way to a card, that one goes, and a callback acts on the first.
template <int64_t Pause>
void LentDevice(Explorer& explorer, const Setting&, Start from) {
    for (const unsigned borrower : {0u, 1u}) {
        const Act lenderGoes = {Message::Shut, 1 - borrower};
        for (const Act& held : ActsOf(borrower, {Message::Stop, Message::Start, Message::Shut})) {
            for (const Act& after : ActsOf(borrower, {Message::Stop, Message::Shut, Message::Write})) {
                const size_t inCallback = from == Start::Ending ? 2 : Script::Nobody;
                explorer.Explore({from, {held, lenderGoes, after}, inCallback, Pause});
            }
        }
    }
}
constexpr int64_t LongWait = 6000 * Scene::Millisecond;  // longer than a close waits for anything

struct Sweep {
    const char* Name;
    void (*Explore)(Explorer& explorer, const Setting& setting, Start from);
    std::vector<const Setting*> Settings;
    std::vector<Start> Starts;
};

const Sweep Sweeps[] = {
    {"PairsOfOne",
     PairsOfOne,
     {&OneOutput, &OneInput},
     {Start::Fresh, Start::Playing, Start::Paused, Start::Asleep}},
    {"PairsOfTwo",
     PairsOfTwo,
     {&TwoOutputs, &LinkedCards, &LockedInput},
     {Start::Ready, Start::Playing, Start::Asleep}},
    {"WakingUp", WakingUp, {&TwoOutputs, &LinkedCards, &LockedInput}, {Start::Dozing}},
    {"Opening", Opening, {&TwoOutputs, &LinkedCards, &LockedInput}, {Start::Partly}},
    {"FirstOpens", FirstOpens, {&TwoOutputs, &LinkedCards, &LockedInput}, {Start::Idle}},
    {"InCallback", InCallback, {&OneOutput, &OneInput, &TwoOutputs}, {Start::Ending}},
    {"LentDevice",
     LentDevice<Scene::Millisecond>,
     {&TwoOutputs, &LinkedCards},
     {Start::Ready, Start::Ending}},
    {"LentForLong", LentDevice<LongWait>, {&TwoOutputs}, {Start::Ending}},
};

constexpr unsigned Pieces = 12;

class Interleaving : public testing::TestWithParam<std::tuple<size_t, unsigned>> {};

TEST_P(Interleaving, OfOneProgram) {
    const auto& [index, piece] = GetParam();
    const Sweep& sweep = Sweeps[index];
    for (const Setting* setting : sweep.Settings) {
        for (const Start from : sweep.Starts) {
            Side side(*setting);
            Explorer explorer(*setting, {Line(side)}, {piece, Pieces});
            sweep.Explore(explorer, *setting, from);
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Each, Interleaving,
                         testing::Combine(testing::Range(size_t{0}, std::size(Sweeps)),
                                          testing::Range(0u, Pieces)),
                         [](const auto& told) {
                             return Sweeps[std::get<0>(told.param)].Name +
                                    std::to_string(std::get<1>(told.param));
                         });

}  // namespace
}  // namespace interleaving
