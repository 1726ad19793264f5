#include "stream/header_ledger.h"

#include <cstring>

#include "card/heap.h"

namespace kestvox {

namespace {

constexpr DWORD FirstCapacity = 64;

}  // namespace

HeaderLedger::~HeaderLedger() {
    FreeHeapArray(entries_);
}

// Moves the entries to the front of the array, or to one of twice the size when it is half full.
bool HeaderLedger::MakeRoom() {
    if (begin_ != 0 && count_ <= capacity_ / 2) {
        memmove(entries_, entries_ + begin_, count_ * sizeof *entries_);
        begin_ = 0;
        return true;
    }
    const DWORD capacity = capacity_ != 0 ? capacity_ * 2 : FirstCapacity;
    HeldHeader* grown = NewHeapArray<HeldHeader>(capacity);
    if (grown == nullptr) {
        return false;
    }
    if (count_ != 0) {
        memcpy(grown, entries_ + begin_, count_ * sizeof *grown);
    }
    FreeHeapArray(entries_);
    entries_ = grown;
    begin_ = 0;
    capacity_ = capacity;
    return true;
}

bool HeaderLedger::Accept(WAVEHDR* header, DWORD bytes, DWORD resets) {
    if (begin_ + count_ == capacity_ && !MakeRoom()) {
        return false;
    }
    entries_[begin_ + count_] = {header, bytes, 0, resets, false, false};
    ++count_;
    return true;
}

template <typename Predicate>
HeldHeader* HeaderLedger::FindFirst(Predicate matches) {
    for (DWORD i = begin_; i < begin_ + count_; ++i) {
        if (matches(entries_[i])) {
            return &entries_[i];
        }
    }
    return nullptr;
}

HeldHeader* HeaderLedger::Find(const WAVEHDR* header) {
    return FindFirst([header](const HeldHeader& held) { return held.Header == header; });
}

HeldHeader* HeaderLedger::FindInFlight(const WAVEHDR* header) {
    HeldHeader* held = Find(header);
    return held != nullptr && held->InFlight != 0 ? held : nullptr;
}

HeldHeader* HeaderLedger::FirstIdle(DWORD resets) {
    return FindFirst([resets](const HeldHeader& held) { return held.InFlight == 0 && held.Resets < resets; });
}

HeldHeader* HeaderLedger::FirstSpent() {
    return FindFirst([](const HeldHeader& held) { return held.Spent; });
}

void HeaderLedger::Forget(HeldHeader* held) {
    const DWORD index = static_cast<DWORD>(held - entries_);
    if (index == begin_) {
        ++begin_;
    } else {
        memmove(held, held + 1, (begin_ + count_ - index - 1) * sizeof *held);
    }
    --count_;
}

}  // namespace kestvox
