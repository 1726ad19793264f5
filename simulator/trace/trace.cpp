#include "simulator/trace/trace.h"

#include <cstdio>
#include <cstring>
#include <utility>

#include "simulator/card/register_view.h"
#include "simulator/requests/protocol.h"
#include "simulator/requests/request_names.h"
#include "simulator/trace/trace_log.h"

namespace simulator {
namespace {

template <typename... Values>
std::string Print(const char* format, Values... values) {
    char text[80];
    std::snprintf(text, sizeof text, format, values...);
    return text;
}

// The field of the input at `offset`; 0 when the input is shorter than that.
uint32_t Word(const TraceEntry& entry, size_t offset) {
    uint32_t word = 0;
    if (entry.Input.size() >= offset + sizeof word) {
        std::memcpy(&word, entry.Input.data() + offset, sizeof word);
    }
    return word;
}

const char* SpaceName(const TraceEntry& entry) {
    return Word(entry, offsetof(RegisterRequest, Space)) == 0 ? "card" : "port";
}

bool AllZero(const std::vector<uint8_t>& bytes) {
    for (const uint8_t byte : bytes) {
        if (byte != 0) {
            return false;
        }
    }
    return true;
}

}  // namespace

std::string TraceEntry::Text() const {
    std::string name = RequestName(Code);
    switch (Code) {
    case ReadRegister:
        return Print("read %s %u", SpaceName(*this), Word(*this, offsetof(RegisterRequest, Register)));
    case WriteRegister:
        return Print(
            "write %s %u = %02X / %02X", SpaceName(*this), Word(*this, offsetof(RegisterRequest, Register)),
            Word(*this, offsetof(RegisterRequest, Value)), Word(*this, offsetof(RegisterRequest, Mask)));
    case Stall:
        return Print("stall %u", Word(*this, 0));
    case QueueBuffer:
        return name + Print(" %u", Word(*this, 0));
    case MapBuffer:
        return name + Print(" %u", OutputLength);
    case ReadNvramPage:
        return name + Print(" %04X", Word(*this, 0));
    case ReadPciConfig:
    case WritePciConfig:
        return name + Print(" %02X %u", Word(*this, 0), OutputLength);
    case SetCompletionRoutine:
        return AllZero(Input) ? name + " 0" : name;
    case BindHandle: {
        const uint32_t channel = Word(*this, offsetof(BindRequest, Channel));
        return name + Print(" %u ", Word(*this, 0)) +
               (channel == ControlChannel ? "control" : std::to_string(channel));
    }
    default:
        return name;
    }
}

std::string TraceEntry::Meaning() const {
    if (Code != WriteRegister) {
        return "";
    }
    const bool ofCard = Word(*this, offsetof(RegisterRequest, Space)) == 0;
    return DescribeWrite(ofCard ? ControlChannel : Channel, Word(*this, offsetof(RegisterRequest, Register)),
                         static_cast<uint8_t>(Word(*this, offsetof(RegisterRequest, Value))),
                         static_cast<uint8_t>(Word(*this, offsetof(RegisterRequest, Mask))));
}

void TraceLog::Keep() {
    wantsEntries_ = true;
}

void TraceLog::Send(TraceSink sink) {
    const std::lock_guard<host::Lock> guard(mutex_);
    for (Entry& entry : entries_) {
        entry.Ended = true;
    }
    GiveEnded();
    Drop();
    sink_ = std::move(sink);
    wantsEntries_ = static_cast<bool>(sink_);
}

uint64_t TraceLog::Begin(TraceEntry entry) {
    const std::lock_guard<host::Lock> guard(mutex_);
    entries_.push_back({std::move(entry), false});
    return first_ + entries_.size() - 1;
}

void TraceLog::Finish(uint64_t number, std::span<const uint8_t> output, const End& end) {
    const std::lock_guard<host::Lock> guard(mutex_);
    if (number < first_) {
        return;  // dropped meanwhile
    }
    Entry& entry = entries_[static_cast<size_t>(number - first_)];
    entry.What.Output.assign(output.begin(), output.end());
    entry.What.Result = end.Result;
    entry.What.Duration = end.At - entry.What.Microseconds;
    entry.What.Struck = end.Struck;
    entry.Ended = true;
    GiveEnded();
}

void TraceLog::AddEvent(TraceEntry entry) {
    const std::lock_guard<host::Lock> guard(mutex_);
    if (sink_) {
        entries_.push_back({std::move(entry), true});
        GiveEnded();
    }
}

void TraceLog::GiveEnded() {
    while (sink_ && !entries_.empty() && entries_.front().Ended) {
        sink_(entries_.front().What);
        entries_.pop_front();
        ++first_;
    }
}

void TraceLog::Drop() {
    first_ += entries_.size();
    entries_.clear();
}

std::vector<TraceEntry> TraceLog::Entries() const {
    const std::lock_guard<host::Lock> guard(mutex_);
    std::vector<TraceEntry> entries;
    entries.reserve(entries_.size());
    for (const Entry& entry : entries_) {
        entries.push_back(entry.What);
    }
    return entries;
}

void TraceLog::Clear() {
    const std::lock_guard<host::Lock> guard(mutex_);
    Drop();
    count_ = 0;
}

}  // namespace simulator
