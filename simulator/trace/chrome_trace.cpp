#include <iomanip>
#include <ostream>
#include <set>
#include <utility>

#include "simulator/requests/protocol.h"
#include "simulator/trace/trace.h"

namespace simulator {
namespace {

constexpr uint32_t ControlTrack = ChannelCount;

// Every event is one line; all but the first begin with the comma that parts it from the one before.
class EventWriter {
public:
    explicit EventWriter(std::ostream& out) : out_(out) { out_ << "{\"traceEvents\":[\n"; }
    ~EventWriter() { out_ << "\n],\"displayTimeUnit\":\"ms\"}\n"; }
    EventWriter(const EventWriter&) = delete;
    EventWriter& operator=(const EventWriter&) = delete;

    std::ostream& Next() {
        out_ << (first_ ? "" : ",\n");
        first_ = false;
        return out_;
    }

private:
    std::ostream& out_;
    bool first_ = true;
};

uint32_t TrackOf(const TraceEntry& entry) {
    return entry.Channel < ChannelCount ? entry.Channel : ControlTrack;
}

const char* TrackName(uint32_t track) {
    return track < ChannelCount ? ChannelNames[track] : "control";
}

void WriteNames(EventWriter& events, std::span<const TraceEntry> entries) {
    std::set<unsigned> cards;
    std::set<std::pair<unsigned, uint32_t>> tracks;
    for (const TraceEntry& entry : entries) {
        const uint32_t track = TrackOf(entry);
        if (cards.insert(entry.Card).second) {
            events.Next() << "{\"ph\":\"M\",\"name\":\"process_name\",\"pid\":" << entry.Card
                          << ",\"args\":{\"name\":\"card " << entry.Card << "\"}}";
        }
        if (tracks.insert({entry.Card, track}).second) {
            events.Next() << "{\"ph\":\"M\",\"name\":\"thread_name\",\"pid\":" << entry.Card
                          << ",\"tid\":" << track << ",\"args\":{\"name\":\"" << TrackName(track) << "\"}}";
        }
    }
}

// A stall lasts as long as it says; of the others only the beginning is known.
uint32_t DurationOf(const TraceEntry& entry) {
    uint32_t microseconds = 0;
    if (entry.Code == Stall && entry.Input.size() == sizeof microseconds) {
        for (size_t byte = 0; byte < sizeof microseconds; ++byte) {
            microseconds |= static_cast<uint32_t>(entry.Input[byte]) << (8 * byte);
        }
    }
    return microseconds;
}

void WriteBytes(std::ostream& out, const std::vector<uint8_t>& bytes) {
    const std::ios_base::fmtflags flags = out.flags();
    out << std::hex << std::uppercase << std::setfill('0');
    for (const uint8_t byte : bytes) {
        out << std::setw(2) << static_cast<unsigned>(byte);
    }
    out.flags(flags);
}

}  // namespace

void WriteChromeTrace(std::ostream& out, std::span<const TraceEntry> entries) {
    EventWriter events(out);
    WriteNames(events, entries);
    for (const TraceEntry& entry : entries) {
        events.Next() << "{\"ph\":\"X\",\"name\":\"" << entry.Text() << "\",\"cat\":\""
                      << (entry.Result == 0 ? "request" : "failed") << "\",\"pid\":" << entry.Card
                      << ",\"tid\":" << TrackOf(entry) << ",\"ts\":" << entry.Microseconds
                      << ",\"dur\":" << DurationOf(entry) << ",\"args\":{\"result\":" << entry.Result
                      << ",\"file\":" << entry.File << ",\"process\":" << entry.Process
                      << ",\"thread\":" << entry.Thread << ",\"output\":\"";
        WriteBytes(out, entry.Output);
        out << "\"}}";
    }
}

}  // namespace simulator
