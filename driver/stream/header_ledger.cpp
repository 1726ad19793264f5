#include "stream/header_ledger.h"

#include <cstring>

#include "card/heap.h"

namespace kestvox {

namespace {

constexpr DWORD FirstCapacity = 64;

void Push(HeldHeader** list, HeldHeader* held) {
    held->NextInBucket = *list;
    *list = held;
}

HeldHeader* Pop(HeldHeader** list) {
    HeldHeader* held = *list;
    if (held != nullptr) {
        *list = held->NextInBucket;
    }
    return held;
}

}  // namespace

HeaderLedger::~HeaderLedger() {
    for (HeldHeader* block : blocks_) {
        FreeHeapArray(block);
    }
    FreeHeapArray(buckets_);
}

// Headers often lie side by side: the address is mixed so that each of its bits counts.
HeldHeader** HeaderLedger::BucketOf(const WAVEHDR* header) {
    constexpr DWORD GoldenRatio = 0x9E3779B9;  // of 2^32
    const DWORD mixed = static_cast<DWORD>(reinterpret_cast<ULONG_PTR>(header) >> 2) * GoldenRatio;
    return &buckets_[(mixed ^ mixed >> 16) & (capacity_ - 1)];
}

// Twice as many records, and as many buckets as records.
bool HeaderLedger::Grow() {
    const DWORD added = capacity_ != 0 ? capacity_ : FirstCapacity;
    HeldHeader** table = blockCount_ < MostBlocks ? NewHeapArray<HeldHeader*>(capacity_ + added) : nullptr;
    HeldHeader* block = table != nullptr ? NewHeapArray<HeldHeader>(added) : nullptr;
    if (block == nullptr) {
        FreeHeapArray(table);
        return false;
    }
    HeldHeader** old = buckets_;
    const DWORD oldCount = capacity_;
    buckets_ = table;
    capacity_ += added;
    memset(buckets_, 0, capacity_ * sizeof *buckets_);
    for (DWORD i = 0; i < oldCount; ++i) {
        while (HeldHeader* held = Pop(&old[i])) {
            Push(BucketOf(held->Header), held);
        }
    }
    FreeHeapArray(old);
    blocks_[blockCount_++] = block;
    for (DWORD i = added; i > 0; --i) {
        Push(&unused_, &block[i - 1]);
    }
    return true;
}

HeldHeader* HeaderLedger::Accept(WAVEHDR* header, DWORD bytes, DWORD resets) {
    if (unused_ == nullptr && !Grow()) {
        return nullptr;
    }
    HeldHeader* held = Pop(&unused_);
    *held = {};
    held->Header = header;
    held->Bytes = bytes;
    held->Resets = resets;
    Push(BucketOf(header), held);
    return held;
}

void HeaderLedger::Queue(HeldHeader* held) {
    held->Older = newest_;
    (newest_ != nullptr ? newest_->Newer : oldest_) = held;
    newest_ = held;
}

void HeaderLedger::Forget(HeldHeader* held) {
    HeldHeader** link = BucketOf(held->Header);
    while (*link != held) {
        link = &(*link)->NextInBucket;
    }
    *link = held->NextInBucket;
    if (held->Older != nullptr || held == oldest_) {
        (held->Older != nullptr ? held->Older->Newer : oldest_) = held->Newer;
        (held->Newer != nullptr ? held->Newer->Older : newest_) = held->Older;
    }
    Push(&unused_, held);
}

HeldHeader* HeaderLedger::Find(const WAVEHDR* header) {
    HeldHeader* held = capacity_ != 0 ? *BucketOf(header) : nullptr;
    while (held != nullptr && held->Header != header) {
        held = held->NextInBucket;
    }
    return held;
}

HeldHeader* HeaderLedger::FirstIdle(DWORD resets) {
    HeldHeader* held = oldest_;
    while (held != nullptr && (held->InFlight != 0 || held->Resets >= resets)) {
        held = held->Newer;
    }
    return held;
}

HeldHeader* HeaderLedger::FirstSpent() {
    HeldHeader* held = oldest_;
    while (held != nullptr && !held->Spent) {
        held = held->Newer;
    }
    return held;
}

}  // namespace kestvox
