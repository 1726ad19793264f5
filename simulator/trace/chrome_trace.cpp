#include <algorithm>
#include <iomanip>
#include <ostream>
#include <utility>

#include "simulator/requests/protocol.h"
#include "simulator/trace/trace.h"

namespace simulator {
namespace {

constexpr uint32_t ControlTrack = ChannelCount;

uint32_t TrackOf(const TraceEntry& entry) {
    return entry.Channel < ChannelCount ? entry.Channel : ControlTrack;
}

const char* TrackName(uint32_t track) {
    return track < ChannelCount ? ChannelNames[track] : "control";
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

ChromeTrace::ChromeTrace(std::ostream& out) : out_(out) {
    out_ << "{\"traceEvents\":[\n";
}

void ChromeTrace::Finish() {
    out_ << "\n],\"displayTimeUnit\":\"ms\"}\n";
}

// Every event is one line; all but the first begin with the comma that parts it from the one before.
std::ostream& ChromeTrace::NextEvent() {
    out_ << (first_ ? "" : ",\n");
    first_ = false;
    return out_;
}

// A card is named with its first track.
void ChromeTrace::NameTrack(const TraceEntry& entry) {
    const auto [at, isNew] = named_.insert({entry.Card, TrackOf(entry)});
    if (!isNew) {
        return;
    }
    const auto isSameCard = [&](const auto& track) { return track.first == entry.Card; };
    if (std::ranges::count_if(named_, isSameCard) == 1) {
        NextEvent() << "{\"ph\":\"M\",\"name\":\"process_name\",\"pid\":" << entry.Card
                    << ",\"args\":{\"name\":\"card " << entry.Card << "\"}}";
    }
    NextEvent() << "{\"ph\":\"M\",\"name\":\"thread_name\",\"pid\":" << entry.Card
                << ",\"tid\":" << at->second << ",\"args\":{\"name\":\"" << TrackName(at->second) << "\"}}";
}

void ChromeTrace::Write(const TraceEntry& entry) {
    NameTrack(entry);
    NextEvent() << "{\"ph\":\"X\",\"name\":\"" << entry.Text() << "\",\"cat\":\""
                << (entry.Result == 0 ? "request" : "failed") << "\",\"pid\":" << entry.Card
                << ",\"tid\":" << TrackOf(entry) << ",\"ts\":" << entry.Microseconds
                << ",\"dur\":" << entry.Duration << ",\"args\":{\"result\":" << entry.Result
                << ",\"file\":" << entry.File << ",\"process\":" << entry.Process
                << ",\"thread\":" << entry.Thread << ",\"output\":\"";
    WriteBytes(out_, entry.Output);
    out_ << "\"}}";
}

}  // namespace simulator
