#include "simulator/process_side.h"

#include <algorithm>

#include "simulator/clock_control.h"

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

void ProcessSide::Report(unsigned card, const std::vector<FinishedBuffer>& finished, int64_t now) {
    for (const FinishedBuffer& buffer : finished) {
        if (const OpenFile* file = OwnerOf(card, buffer.Channel)) {
            Completions.Add(file->Number, file->Completion, buffer.Cookie, now, Faults);
        }
    }
}

size_t ProcessSide::CatchUp(int64_t now) {
    MachineState& machine = Machine();
    SettleReceivers(machine, now);
    size_t count = 0;
    std::vector<FinishedBuffer> finished;
    for (unsigned card = 0; card < machine.CardCount; ++card) {
        players_[card].CatchUp(machine.Cards[card], now, finished);
        Report(card, finished, now);
        count += finished.size();
        finished.clear();
    }
    Completions.Ripen(now);
    return count;
}

void ProcessSide::Flush(OpenFile& file, int64_t now) {
    std::vector<FinishedBuffer> finished;
    players_[file.Card].Flush(Machine().Cards[file.Card], file.Channel, finished);
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
