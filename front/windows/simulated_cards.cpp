#include "front/windows/simulated_cards.h"

#include <windows.h>

#include <memory>
#include <optional>

#include "simulator/attach.h"
#include "simulator/simulator.h"

namespace front {

namespace {

// Null without cards of our own. A program's end is the end of its cards: they are not taken away from
// a destructor, when threads have been stopped anywhere.
simulator::Simulator* cards = nullptr;

// Empty when it is not set, or longer than any that makes sense.
struct Variable {
    explicit Variable(const char* name) {
        if (GetEnvironmentVariableA(name, Text, sizeof Text) >= sizeof Text) {
            Text[0] = '\0';
        }
    }
    char Text[16] = {};
};

std::optional<unsigned> AskedCards(const char* text) {
    unsigned count = 0;
    for (; *text >= '0' && *text <= '9' && count <= simulator::MaxCards; ++text) {
        count = count * 10 + static_cast<unsigned>(*text - '0');
    }
    return *text == '\0' && count <= simulator::MaxCards ? std::optional(count) : std::nullopt;
}

bool Refuse(const char* why) {
    OutputDebugStringA(why);
    return false;
}

}  // namespace

bool PutUpCards() {
    if (simulator::HasSimulator()) {
        return true;
    }
    const std::optional<unsigned> count = AskedCards(Variable("KESTVOX_CARDS").Text);
    if (!count) {
        return Refuse("winmm: KESTVOX_CARDS must be a number from 1 to 16\n");
    }
    const Variable time("KESTVOX_TIME");
    simulator::Simulator::Options options{.Cards = *count, .Time = std::nullopt};
    if (lstrcmpiA(time.Text, "stepped") == 0) {
        options.Time = simulator::TimeKind::Stepped;
    } else if (lstrcmpiA(time.Text, "real") == 0) {
        options.Time = simulator::TimeKind::Real;
    } else if (time.Text[0] != '\0') {
        return Refuse("winmm: KESTVOX_TIME must be real or stepped\n");
    }
    cards = new simulator::Simulator(options);
    return true;
}

void TakeAwayCards() {
    delete cards;
    cards = nullptr;
}

}  // namespace front
