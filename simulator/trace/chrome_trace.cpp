#include <algorithm>
#include <cstring>
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

uintptr_t CookieOf(const TraceEntry& entry) {
    uintptr_t cookie = 0;
    if (entry.Input.size() == sizeof cookie) {
        std::memcpy(&cookie, entry.Input.data(), sizeof cookie);
    }
    return cookie;
}

// The number at the front, which is taken away; 0: there is none.
uint64_t TakeFirst(std::map<uintptr_t, std::deque<uint64_t>>& numbers, uintptr_t of) {
    const auto found = numbers.find(of);
    if (found == numbers.end()) {
        return 0;
    }
    const uint64_t number = found->second.front();
    found->second.pop_front();
    if (found->second.empty()) {
        numbers.erase(found);
    }
    return number;
}

size_t CountAll(const std::map<uintptr_t, std::deque<uint64_t>>& numbers) {
    size_t count = 0;
    for (const auto& [of, list] : numbers) {
        count += list.size();
    }
    return count;
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
void ChromeTrace::NameTrack(Track track) {
    if (!named_.insert(track).second) {
        return;
    }
    const auto isSameCard = [&](const Track& other) { return other.first == track.first; };
    if (std::ranges::count_if(named_, isSameCard) == 1) {
        NextEvent() << "{\"ph\":\"M\",\"name\":\"process_name\",\"pid\":" << track.first
                    << ",\"args\":{\"name\":\"card " << track.first << "\"}}";
    }
    NextEvent() << "{\"ph\":\"M\",\"name\":\"thread_name\",\"pid\":" << track.first
                << ",\"tid\":" << track.second << ",\"args\":{\"name\":\"" << TrackName(track.second)
                << "\"}}";
}

void ChromeTrace::Write(const TraceEntry& entry) {
    NameTrack({entry.Card, TrackOf(entry)});
    if (entry.Code == TraceEntry::BufferFinished) {
        EndInCard(entry);
    } else {
        WriteRequest(entry);
        FollowHandOver(entry);
        FollowRun(entry);
    }
}

void ChromeTrace::WriteRequest(const TraceEntry& entry) {
    NextEvent() << "{\"ph\":\"X\",\"name\":\"" << entry.Text() << "\",\"cat\":\""
                << (entry.Result == 0 ? "request" : "failed") << "\",\"pid\":" << entry.Card
                << ",\"tid\":" << TrackOf(entry) << ",\"ts\":" << entry.Microseconds
                << ",\"dur\":" << entry.Duration << ",\"args\":{\"result\":" << entry.Result
                << ",\"file\":" << entry.File << ",\"process\":" << entry.Process
                << ",\"thread\":" << entry.Thread << ",\"output\":\"";
    WriteBytes(out_, entry.Output);
    out_ << "\"";
    if (const std::string meaning = entry.Meaning(); !meaning.empty()) {
        out_ << ",\"means\":\"" << meaning << "\"";
    }
    out_ << "}}";
}

// Which header the first two requests are for is known with the third.
void ChromeTrace::FollowHandOver(const TraceEntry& entry) {
    if (entry.Code != BeginBuffer && entry.Code != MapBuffer && entry.Code != SetBufferCookie &&
        entry.Code != QueueBuffer) {
        return;
    }
    std::vector<TraceEntry>& requests = handOvers_[{entry.Process, entry.File}];
    if (entry.Code == BeginBuffer) {
        requests.clear();
    }
    requests.push_back(entry);
    if (entry.Code != QueueBuffer) {
        return;
    }
    const Track track{entry.Card, TrackOf(entry)};
    ChannelState& channel = channels_[track];
    const auto named = std::ranges::find(requests, SetBufferCookie, &TraceEntry::Code);
    const auto out = named == requests.end() ? channel.Out.end() : channel.Out.find(CookieOf(*named));
    if (out != channel.Out.end()) {
        const uint64_t header = out->second.back();
        for (const TraceEntry& request : requests) {
            WriteBar('b', track, header, request.Text(), request.Microseconds);
            WriteBar('e', track, header, request.Text(), request.Microseconds + request.Duration);
        }
        if (entry.Result == 0) {
            BeginInCard(track, out->first, header, entry.Microseconds + entry.Duration);
        }
    }
    requests.clear();
}

void ChromeTrace::FollowRun(const TraceEntry& entry) {
    if (entry.Code == ArmChannel || entry.Code == DisarmChannel) {
        ChannelState& channel = channels_[{entry.Card, TrackOf(entry)}];
        channel.Runs = entry.Code == ArmChannel;
        channel.DrySince.reset();
    }
}

void ChromeTrace::BeginInCard(Track track, uintptr_t cookie, uint64_t header, int64_t time) {
    ChannelState& channel = channels_[track];
    if (channel.DrySince && *channel.DrySince < time) {
        NextEvent() << "{\"ph\":\"i\",\"s\":\"t\",\"name\":\"ran dry\",\"pid\":" << track.first
                    << ",\"tid\":" << track.second << ",\"ts\":" << *channel.DrySince
                    << ",\"args\":{\"microseconds\":" << time - *channel.DrySince << "}}";
    }
    channel.DrySince.reset();
    channel.InCard[cookie].push_back(header);
    WriteBar('b', track, header, "in the card", time);
    WriteCounter(track, time);
}

void ChromeTrace::EndInCard(const TraceEntry& entry) {
    const Track track{entry.Card, TrackOf(entry)};
    if (const uint64_t header = TakeFirst(channels_[track].InCard, CookieOf(entry))) {
        WriteBar('e', track, header, "in the card", entry.Microseconds);
        WriteCounter(track, entry.Microseconds);
        if (ChannelState& channel = channels_[track]; channel.Runs && channel.InCard.empty()) {
            channel.DrySince = entry.Microseconds;
        }
    }
}

void ChromeTrace::Write(const HeaderEvent& event) {
    const Track track{event.Card, event.Channel};
    NameTrack(track);
    ChannelState& channel = channels_[track];
    const auto address = reinterpret_cast<uintptr_t>(event.Header);
    const bool queued = event.What == HeaderEvent::Kind::Queued;
    if (queued) {
        channel.Out[address].push_back(++channel.Headers);
    }
    const uint64_t header = queued ? channel.Headers : TakeFirst(channel.Out, address);
    if (header != 0) {
        WriteBar(queued ? 'b' : 'e', track, header, "header " + std::to_string(header), event.Microseconds);
        WriteCounter(track, event.Microseconds);
    }
}

// Bars of one header have one id, so that a viewer draws them one inside the other.
void ChromeTrace::WriteBar(char phase, Track track, uint64_t header, const std::string& name, int64_t time) {
    NextEvent() << "{\"ph\":\"" << phase << "\",\"cat\":\"header\",\"id\":\"" << track.first << "."
                << track.second << "." << header << "\",\"name\":\"" << name << "\",\"pid\":" << track.first
                << ",\"tid\":" << track.second << ",\"ts\":" << time << "}";
}

void ChromeTrace::WriteCounter(Track track, int64_t time) {
    const ChannelState& channel = channels_[track];
    NextEvent() << "{\"ph\":\"C\",\"name\":\"" << TrackName(track.second)
                << ": headers\",\"pid\":" << track.first << ",\"tid\":" << track.second << ",\"ts\":" << time
                << ",\"args\":{\"with the driver\":" << CountAll(channel.Out)
                << ",\"in the card\":" << CountAll(channel.InCard) << "}}";
}

}  // namespace simulator
