// The same with a stream of another program: what the two share is the cards, and what the driver notes of
// them. Where a step of another process takes milliseconds, too few would fit to be worth it.
#include <gtest/gtest.h>

#include "tests/interleaving/explorer.h"

namespace interleaving {
namespace {

const Setting OneCard{"programs-on-a-card",
                      1,
                      false,
                      false,
                      {{.Output = true, .Card = 0, .Port = 0, .Program = 0},
                       {.Output = true, .Card = 0, .Port = 1, .Program = 1}}};
const Setting LinkedCards{"programs-on-linked-cards",
                          2,
                          true,
                          false,
                          {{.Output = true, .Card = 0, .Port = 0, .Program = 0},
                           {.Output = true, .Card = 1, .Port = 0, .Program = 1}}};

template <const Setting& TheSetting>
void BeTheOther(Companion& test) {
    LocalSide side(TheSetting);
    ServeSide(test, side);
}

// The system tells every program of a sleep and of its end: no program resumes but from one.
std::vector<Act> ActsOf(unsigned program, Start from) {
    std::vector<Act> acts;
    for (const Message message :
         {Message::Write, Message::Start, Message::Stop, Message::Reset, Message::Shut, Message::Volume,
          from == Start::Asleep ? Message::Resume : Message::Suspend, Message::Free}) {
        acts.push_back({message, program, program});
    }
    return acts;
}

void ExplorePairs(Explorer& explorer, Start from, const std::vector<Act>& held,
                  const std::vector<Act>& others) {
    for (const Act& first : held) {
        for (const Act& second : others) {
            explorer.Explore({from, {first, second}});
        }
    }
}

class InterleavingOfPrograms : public testing::TestWithParam<Start> {
protected:
    template <const Setting& TheSetting>
    static void Explore() {
        const SharedMachine machine;
        Companion companion(BeTheOther<TheSetting>);
        LocalSide here(TheSetting);
        RemoteSide there(companion);
        Explorer explorer(TheSetting, {&here, &there});
        if (GetParam() == Start::Ending) {
            for (const Message message :
                 {Message::Write, Message::Start, Message::Stop, Message::Reset, Message::Shut}) {
                for (const Act& other : ActsOf(1, GetParam())) {
                    explorer.Explore({Start::Ending, {{message, 0, 0}, other}, 0});
                    explorer.Explore({Start::Ending, {other, {message, 0, 0}}, 1});
                }
            }
        } else if (GetParam() == Start::Partly) {
            const std::vector<Act> open = {{Message::Open, 1, 1}};
            ExplorePairs(explorer, GetParam(), open, ActsOf(0, GetParam()));
            ExplorePairs(explorer, GetParam(), ActsOf(0, GetParam()), open);
        } else {
            ExplorePairs(explorer, GetParam(), ActsOf(0, GetParam()), ActsOf(1, GetParam()));
            ExplorePairs(explorer, GetParam(), ActsOf(1, GetParam()), ActsOf(0, GetParam()));
        }
    }
};

TEST_P(InterleavingOfPrograms, OnACard) {
    Explore<OneCard>();
}

TEST_P(InterleavingOfPrograms, OnLinkedCards) {
    Explore<LinkedCards>();
}

INSTANTIATE_TEST_SUITE_P(From, InterleavingOfPrograms,
                         testing::Values(Start::Ready, Start::Playing, Start::Asleep, Start::Partly,
                                         Start::Ending),
                         [](const auto& told) { return std::string(NameOf(told.param)); });

}  // namespace
}  // namespace interleaving
