#include "simulator/machine/process_side.h"

#include <algorithm>
#include <utility>

#include "simulator/clock/clock_control.h"

namespace simulator {

OpenFile* ProcessSide::Open(unsigned card) {
    files_.push_back(std::make_unique<OpenFile>(OpenFile{.Number = ++filesEverOpened_, .Card = card}));
    return files_.back().get();
}

void ProcessSide::Close(OpenFile* file) {
    if (file->HasChannel()) {
        players_[file->Card].Release(file->Channel);
    }
    Completions.Forget(file->Number);
    std::erase_if(files_, [file](const std::unique_ptr<OpenFile>& open) { return open.get() == file; });
}

OpenFile* ProcessSide::OwnerOf(unsigned card, unsigned channel) const {
    for (const std::unique_ptr<OpenFile>& file : files_) {
        if (file->Card == card && file->Channel == channel) {
            return file.get();
        }
    }
    return nullptr;
}

namespace {

std::vector<uint8_t> BytesOf(ULONG_PTR cookie) {
    const auto* const bytes = reinterpret_cast<const uint8_t*>(&cookie);
    return {bytes, bytes + sizeof cookie};
}

}  // namespace

TraceEntry EntryOf(const OpenFile& file, uint32_t code, int64_t now) {
    return {.Microseconds = now / 1000,
            .Duration = 0,
            .Process = host::CurrentProcess().Id,
            .Thread = host::CurrentThreadId(),
            .File = file.Number,
            .Card = file.Card,
            .Channel = file.Channel,
            .Code = code,
            .Input = {},
            .Output = {},
            .OutputLength = 0,
            .Result = ERROR_SUCCESS,
            .Struck = {}};
}

void ProcessSide::Report(unsigned card, const std::vector<FinishedBuffer>& finished, int64_t now) {
    for (const FinishedBuffer& buffer : finished) {
        if (const OpenFile* file = OwnerOf(card, buffer.Channel)) {
            const std::optional<Fault::Kind> struck =
                Completions.Add(file->Number, file->Completion, buffer.Cookie, now, Faults);
            if (Trace.WantsEntries()) {
                TraceEntry entry = EntryOf(*file, TraceEntry::BufferFinished, now);
                entry.Input = BytesOf(buffer.Cookie);
                entry.Struck = struck;
                Trace.AddEvent(std::move(entry));
            }
        }
    }
}

// What leaves the connector of an output that has begun is worked out for whoever listens, and for cables.
bool ProcessSide::IsListenedTo(unsigned card, unsigned port) const {
    return players_[card].IsListening(port) && (players_[card].WantsHeard(port) || wiring_.HasCables());
}

// Frames to move, or to hear because an output that has begun lets an input through.
bool ProcessSide::HasWork(const MachineState& machine, int64_t now) const {
    for (unsigned card = 0; card < machine.CardCount; ++card) {
        const CardState& state = machine.Cards[card];
        const CardPlayer& player = players_[card];
        const uint64_t target = state.TickAt(now);
        if (player.DoneTo() >= target) {
            continue;
        }
        const auto hears = [&](unsigned port) {
            return IsListenedTo(card, port) && wiring_.HearsInputs(state, card, port, now);
        };
        if (player.AnyDue(state, target) || hears(0) || hears(1)) {
            return true;
        }
    }
    return false;
}

// As far as no card has more than a block to move, and no digital input begins to give samples.
int64_t ProcessSide::BlockEnd(const MachineState& machine, int64_t now) const {
    int64_t end = now;
    for (unsigned card = 0; card < machine.CardCount; ++card) {
        const CardState& state = machine.Cards[card];
        end = std::min(end, state.TimeOfTick(players_[card].DoneTo() + Block::MostFrames));
        if (state.PortMeasurement.ReceiverReady > movedTo_) {
            end = std::min(end, state.PortMeasurement.ReceiverReady);
        }
    }
    return end;
}

// All cards play before any records, so that what a cable brings has been played.
size_t ProcessSide::MoveBlock(MachineState& machine, int64_t until, int64_t now) {
    size_t count = 0;
    std::vector<FinishedBuffer> finished;
    const auto report = [&](unsigned card) {
        Report(card, finished, now);
        count += finished.size();
        finished.clear();
    };
    for (unsigned card = 0; card < machine.CardCount; ++card) {
        players_[card].BeginBlock(machine.Cards[card], until);
    }
    wiring_.BeginBlock(machine, movedTo_);
    for (unsigned card = 0; card < machine.CardCount; ++card) {
        players_[card].Play(machine.Cards[card], finished);
        report(card);
    }
    for (unsigned card = 0; card < machine.CardCount; ++card) {
        for (unsigned port = 0; port < 2; ++port) {
            if (players_[card].FirstRecorded(machine.Cards[card], port)) {
                players_[card].Record(machine.Cards[card], port, wiring_.Input(card, port), finished);
            } else {
                players_[card].Record(machine.Cards[card], port, nullptr, finished);
            }
            if (players_[card].IsListening(port)) {
                players_[card].Listen(port, IsListenedTo(card, port) ? wiring_.Output(card, port) : nullptr);
            }
        }
        report(card);
    }
    for (unsigned card = 0; card < machine.CardCount; ++card) {
        players_[card].EndBlock();
    }
    movedTo_ = until;
    return count;
}

// What has been played until now is not for a listener who has just come.
void ProcessSide::ConnectTaps(MachineState& machine) {
    if (tapChanges_ == machine.TapChanges) {
        return;
    }
    tapChanges_ = machine.TapChanges;
    for (unsigned card = 0; card < MaxCards; ++card) {
        for (const Port port : {Port::Analog, Port::Digital}) {
            std::vector<Tap*> taps;
            for (Tap& tap : machine.Taps) {
                if (tap.Listener.Id != 0 && tap.Card == card && tap.Port == static_cast<uint32_t>(port)) {
                    taps.push_back(&tap);
                }
            }
            players_[card].Output(port).SendHeardTo(std::move(taps));
        }
    }
}

size_t ProcessSide::CatchUp(int64_t now) {
    MachineState& machine = Machine();
    ConnectTaps(machine);
    SettleReceivers(machine, now);
    size_t count = 0;
    while (HasWork(machine, now)) {
        count += MoveBlock(machine, BlockEnd(machine, now), now);
    }
    for (unsigned card = 0; card < machine.CardCount; ++card) {
        players_[card].SkipTo(machine.Cards[card].TickAt(now));
    }
    movedTo_ = now;
    return count + Completions.Ripen(now);
}

void ProcessSide::Flush(OpenFile& file, int64_t now) {
    std::vector<FinishedBuffer> finished;
    players_[file.Card].Flush(Machine().Cards[file.Card], file.Channel, finished);
    Report(file.Card, finished, now);
}

void ProcessSide::NotePowerCycle(unsigned card, int64_t now) {
    if (Trace.WantsEntries()) {
        Trace.AddEvent(EntryOf({.Number = 0, .Card = card}, TraceEntry::PowerCycled, now));
    }
}

void ProcessSide::GiveBackPartFilled(OpenFile& file, int64_t now) {
    std::vector<FinishedBuffer> finished;
    players_[file.Card].GiveBackPartFilled(Machine().Cards[file.Card], file.Channel, finished);
    Report(file.Card, finished, now);
}

void ProcessSide::FlushCard(unsigned card, int64_t now) {
    for (const std::unique_ptr<OpenFile>& file : files_) {
        if (file->Card == card && file->HasChannel()) {
            Flush(*file, now);
        }
    }
}

int64_t ProcessSide::NextEvent(int64_t now) const {
    const MachineState& machine = Machine();
    int64_t next = std::min(Completions.NextLate(), NextClockEvent(machine, now));
    for (unsigned card = 0; card < machine.CardCount; ++card) {
        next = std::min(next, players_[card].NextEnd(machine.Cards[card]));
    }
    return next;
}

bool ProcessSide::AnyUnderWay() const {
    const MachineState& machine = Machine();
    for (unsigned card = 0; card < machine.CardCount; ++card) {
        if (players_[card].AnyUnderWay(machine.Cards[card])) {
            return true;
        }
    }
    return Completions.NextLate() != Never;
}

bool ProcessSide::OnCompletionThread() const {
    const uint64_t self = host::CurrentThreadId();
    return std::any_of(files_.begin(), files_.end(), [self](const std::unique_ptr<OpenFile>& file) {
        return file->Completion.Routine && file->Completion.ThreadId == self;
    });
}

}  // namespace simulator
