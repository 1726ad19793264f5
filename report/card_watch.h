// What becomes of the cards' registers and clocks in a run.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "simulator/simulator.h"

namespace kestvox {

class CardWatch {
public:
    // Before the driver has come. `cards` outlive this.
    explicit CardWatch(const simulator::Simulator& cards);

    // While the streams run: the first time the registers are kept, and each time the clocks are looked at.
    void Look();
    // The streams are closed.
    void End();

    // A JSON list, an object for each card: "card", "clock" (null: the streams never ran), "clock-changes",
    // the rates that there were, with the times in milliseconds at which they were seen, and "registers",
    // those that changed.
    std::string Json() const;

private:
    using Registers = std::vector<simulator::RegisterView>;
    struct ClockChange {
        int64_t Milliseconds;
        unsigned Rate;  // Hz; 0: no clock
    };
    struct Card {
        Registers Before;
        Registers Running;  // empty: never ran
        Registers After;
        std::vector<ClockChange> Changes;
        uint64_t ChangesLeftOut = 0;
    };

    static std::string JsonOfCard(const Card& card, size_t number);
    static std::string JsonOfClock(const Card& card);
    static std::string JsonOfRegisters(const Card& card);

    const simulator::Simulator& simulator_;
    const int64_t begun_;  // microseconds
    std::vector<Card> cards_;
};

}  // namespace kestvox
