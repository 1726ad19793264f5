// What arrives at the inputs and leaves the outputs of all cards during one block: sources on the input
// connectors, cables from output to input, monitor mixers. The machine's lock guards all of it.
//
// A signal is worked out when it is first asked for in a block, by following the cables back to where it
// comes from. A circle of cables is silent where it comes back to the connector that was asked for.
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <vector>

#include "simulator/channels/card_player.h"
#include "simulator/connectors/input_jack.h"
#include "simulator/machine/machine_state.h"

namespace simulator {

class Wiring {
public:
    // The players of all cards; they outlive this.
    explicit Wiring(std::span<const CardPlayer> players) : players_(players) {}

    void PlugIn(unsigned card, unsigned port, InputSignal signal);

    bool HasCables() const { return hasCables_; }

    // Whether what is plugged into one of the card's inputs can be heard at the output connector by that
    // time.
    bool HearsInputs(const CardState& state, unsigned card, unsigned port, int64_t time) const;

    // The players have begun a block that begins at that time. Outputs may be asked for once every card
    // has played it.
    void BeginBlock(const MachineState& machine, int64_t time);

    // The block's frames as they come out of the input's converter or receiver, and as they leave the
    // connector; null for silence. Valid until the next block.
    const Frame* Input(unsigned card, unsigned port);
    const Frame* Output(unsigned card, unsigned port);

private:
    struct Wire {
        enum class Progress : uint8_t { Unknown, UnderWay, Known };
        Progress State = Progress::Unknown;
        bool Sounds = false;
        Frame Last{};  // of the block before
        std::array<Frame, Block::MostFrames> Frames;
    };
    using Fill = bool (Wiring::*)(unsigned card, unsigned port, Frame* out);

    static void Renew(Wire& wire, size_t frames);
    void WorkOut(Wire& wire, Fill fill, unsigned card, unsigned port);
    const Frame* Signal(Wire& wire, Fill fill, unsigned card, unsigned port);
    bool FillInput(unsigned card, unsigned port, Frame* out);
    bool FillOutput(unsigned card, unsigned port, Frame* out);
    bool FillFromCable(unsigned card, const InputSignal& cable, Frame* out);

    std::span<const CardPlayer> players_;
    std::array<std::array<InputJack, 2>, MaxCards> jacks_;
    bool hasCables_ = false;
    std::array<std::array<Wire, 2>, MaxCards> inputs_;
    std::array<std::array<Wire, 2>, MaxCards> outputs_;
    const MachineState* machine_ = nullptr;  // of the block
    int64_t time_ = 0;                       // its beginning
    bool circle_ = false;                    // the signal being worked out comes back to itself
    std::vector<Wire*> workedOut_;           // along the way to the connector that was asked for
    unsigned depth_ = 0;                     // connectors between that one and here
};

}  // namespace simulator
