// The same with a stream of another program: what the two share is the cards, and what the driver notes of
// them. Where a step of another process takes milliseconds, too few would fit to be worth it.
#include <gtest/gtest.h>

#include "tests/interleaving/explorer.h"

namespace interleaving {
namespace {

constexpr StreamPlan Here{.Output = true, .Card = 0, .Port = 0, .Program = 0};
const Setting OneCard{
    "programs-on-a-card", 1, false, false, {Here, {.Output = true, .Card = 0, .Port = 1, .Program = 1}}};
const Setting LinkedCards{
    "programs-on-linked-cards", 2, true, false, {Here, {.Output = true, .Card = 1, .Port = 0, .Program = 1}}};

template <const Setting& TheSetting>
void BeTheOther(Companion& test) {
    Side side(TheSetting);
    Line::Serve(test, side);
}

// The system tells every program of a sleep and of its end: no program resumes but from one.
std::vector<Act> ActsOf(unsigned program, Start from) {
    if (from == Start::Idle || (from == Start::Partly && program == 1)) {
        return {{Message::Open, program, program}};
    }
    std::vector<Act> acts;
    for (const Message message :
         {Message::Write, Message::Start, Message::Stop, Message::Reset, Message::Shut, Message::Volume,
          from == Start::Asleep ? Message::Resume : Message::Suspend, Message::Free}) {
        acts.push_back({message, program, program});
    }
    return acts;
}

void ExploreBothWays(Explorer& explorer, Start from) {
    constexpr size_t OfCallback = 5;  // what a client does in a callback: Write to Shut
    const std::vector<Act> own = ActsOf(0, from);
    for (size_t i = 0; i < (from == Start::Ending ? OfCallback : own.size()); ++i) {
        for (const Act& other : ActsOf(1, from)) {
            explorer.Explore({from, {own[i], other}, from == Start::Ending ? 0 : Script::Nobody});
            explorer.Explore({from, {other, own[i]}, from == Start::Ending ? 1 : Script::Nobody});
        }
    }
}

constexpr unsigned Pieces = 4;

class InterleavingOfPrograms : public testing::TestWithParam<std::tuple<Start, unsigned>> {
protected:
    template <const Setting& TheSetting>
    static void Explore() {
        const auto& [from, piece] = GetParam();
        const SharedMachine machine;
        Companion companion(BeTheOther<TheSetting>);
        Side here(TheSetting);
        Explorer explorer(TheSetting, {Line(here), Line(companion)}, {piece, Pieces});
        ExploreBothWays(explorer, from);
    }
};

TEST_P(InterleavingOfPrograms, OnACard) {
    Explore<OneCard>();
}

TEST_P(InterleavingOfPrograms, OnLinkedCards) {
    Explore<LinkedCards>();
}

INSTANTIATE_TEST_SUITE_P(From, InterleavingOfPrograms,
                         testing::Combine(testing::Values(Start::Ready, Start::Playing, Start::Asleep,
                                                          Start::Idle, Start::Partly, Start::Ending),
                                          testing::Range(0u, Pieces)),
                         [](const auto& told) {
                             return NameOf(std::get<0>(told.param)) + std::to_string(std::get<1>(told.param));
                         });

}  // namespace
}  // namespace interleaving
