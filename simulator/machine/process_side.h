// What belongs to this process alone: its open files, the buffers that it has mapped, what is plugged in,
// who hears its outputs, faults and trace. The machine's lock guards all but the trace.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <vector>

#include "simulator/channels/card_player.h"
#include "simulator/connectors/wiring.h"
#include "simulator/machine/machine_state.h"
#include "simulator/requests/completion_queue.h"
#include "simulator/trace/fault_list.h"
#include "simulator/trace/trace_log.h"

namespace simulator {

struct OpenFile {
    // How far the hand-over of a buffer has come: each request only after the one before.
    enum class HandOver { None, Begun, Mapped, Named };

    uint32_t Number;
    unsigned Card;
    bool Bound = false;
    uint32_t Channel = ControlChannel;
    HandOver Stage = HandOver::None;
    QueuedBuffer Announced{};
    CompletionTarget Completion{};

    bool HasChannel() const { return Channel != ControlChannel; }
};

// Of that file, by the calling thread, without what is of one kind of request only.
TraceEntry EntryOf(const OpenFile& file, uint32_t code, int64_t now);

class ProcessSide {
public:
    OpenFile* Open(unsigned card);
    // The file's channel must have been given up before.
    void Close(OpenFile* file);
    unsigned OpenFiles() const { return static_cast<unsigned>(files_.size()); }

    CardPlayer& Player(unsigned card) { return players_[card]; }
    const CardPlayer& Player(unsigned card) const { return players_[card]; }
    Wiring& Cables() { return wiring_; }

    // Moves every frame due up to `now` on every card, and lets clocks that settle and late calls come
    // into effect. Answers how many buffers were finished and how many late calls fell due.
    size_t CatchUp(int64_t now);

    // Gives back the buffers of the file's channel, or of every channel that this process has on the card.
    void Flush(OpenFile& file, int64_t now);
    void FlushCard(unsigned card, int64_t now);
    // The file's input channel has been stopped: gives back the buffer that it was filling.
    void GiveBackPartFilled(OpenFile& file, int64_t now);

    // For the trace: the card has lost its power and got it back.
    void NotePowerCycle(unsigned card, int64_t now);

    // The next instant at which something happens by itself; Never when nothing is under way.
    int64_t NextEvent(int64_t now) const;
    bool AnyUnderWay() const;

    // Whether a completion may be running on the calling thread.
    bool OnCompletionThread() const;

    CompletionQueue Completions;
    FaultList Faults;
    TraceLog Trace;

private:
    void ConnectTaps(MachineState& machine);
    bool IsListenedTo(unsigned card, unsigned port) const;
    bool HasWork(const MachineState& machine, int64_t now) const;
    int64_t BlockEnd(const MachineState& machine, int64_t now) const;
    size_t MoveBlock(MachineState& machine, int64_t until, int64_t now);
    void Report(unsigned card, const std::vector<FinishedBuffer>& finished, int64_t now);
    OpenFile* OwnerOf(unsigned card, unsigned channel) const;

    std::array<CardPlayer, MaxCards> players_;
    Wiring wiring_{players_};
    int64_t movedTo_ = 0;      // time
    uint32_t tapChanges_ = 0;  // that have been followed
    std::vector<std::unique_ptr<OpenFile>> files_;
    uint32_t filesEverOpened_ = 0;
};

}  // namespace simulator
