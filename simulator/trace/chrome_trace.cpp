#include "simulator/trace/chrome_trace.h"

#include <algorithm>
#include <cstring>
#include <iomanip>
#include <sstream>

#include "simulator/requests/protocol.h"

namespace simulator {
namespace {

constexpr uint32_t ControlTrack = ChannelCount;
constexpr uint64_t FirstProgram =
    1000000;  // group of a program, plus its number; the cards' groups are their numbers

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

std::string TrackName(uint64_t row) {
    return row < ChannelCount ? ChannelNames[row] : "control";
}

std::string NameOf(uint64_t header) {
    return "header " + std::to_string(header);
}

// "0.2.3": the third header of the third channel of the first card.
std::string IdOf(TimelineFile::Track track, uint64_t header) {
    return std::to_string(track.Group) + "." + std::to_string(track.Row) + "." + std::to_string(header);
}

std::string ArgumentsOf(const TraceEntry& entry) {
    std::ostringstream text;
    text << "\"result\":" << entry.Result << ",\"file\":" << entry.File << ",\"process\":" << entry.Process
         << ",\"thread\":" << entry.Thread << ",\"output\":\"" << std::hex << std::uppercase
         << std::setfill('0');
    for (const uint8_t byte : entry.Output) {
        text << std::setw(2) << static_cast<unsigned>(byte);
    }
    text << "\"";
    if (const std::string meaning = entry.Meaning(); !meaning.empty()) {
        text << ",\"means\":\"" << meaning << "\"";
    }
    return text.str();
}

}  // namespace

ChromeTrace::Track ChromeTrace::CardTrack(unsigned card, uint32_t channel) {
    const Track track{card, std::min(channel, ControlTrack)};
    file_.Name(track, "card " + std::to_string(card), TrackName(track.Row));
    return track;
}

ChromeTrace::Track ChromeTrace::ThreadTrack(uint32_t process, uint64_t thread) {
    const Track track{FirstProgram + process, thread};
    file_.Name(track, "program " + std::to_string(process), "thread " + std::to_string(thread));
    return track;
}

void ChromeTrace::Write(const TraceEntry& entry) {
    const Track track = CardTrack(entry.Card, entry.Channel);
    if (entry.Struck) {
        file_.Mark(track, std::string("fault: ") + FaultName(*entry.Struck), entry.Microseconds, "");
    }
    switch (entry.Code) {
    case TraceEntry::BufferFinished:
        EndInCard(track, entry);
        break;
    case TraceEntry::PowerCycled:
        file_.Mark(track, "lost its power", entry.Microseconds, "");
        asleepSince_.insert({entry.Card, entry.Microseconds});
        break;
    default:
        EndSleep(entry);
        WriteRequest(track, entry);
        FollowHandOver(track, entry);
        FollowRun(track, entry);
    }
}

// The driver comes back to the card.
void ChromeTrace::EndSleep(const TraceEntry& entry) {
    const auto asleep = asleepSince_.extract(entry.Card);
    if (!asleep.empty()) {
        file_.Span(CardTrack(entry.Card, ControlTrack), "asleep", asleep.mapped(),
                   entry.Microseconds - asleep.mapped(), "sleep", "");
    }
}

void ChromeTrace::WriteRequest(Track track, const TraceEntry& entry) {
    file_.Span(track, entry.Text(), entry.Microseconds, entry.Duration,
               entry.Result == 0 ? "request" : "failed", ArgumentsOf(entry));
}

// Which header the first two requests are for is known with the third.
void ChromeTrace::FollowHandOver(Track track, const TraceEntry& entry) {
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
    ChannelState& channel = channels_[track];
    const auto named = std::ranges::find(requests, SetBufferCookie, &TraceEntry::Code);
    const auto out = named == requests.end() ? channel.Out.end() : channel.Out.find(CookieOf(*named));
    if (out != channel.Out.end()) {
        const uint64_t header = out->second.back();
        WriteHandOver(track, header, requests);
        if (entry.Result == 0) {
            BeginInCard(track, out->first, header, entry.Microseconds + entry.Duration);
        }
    }
    requests.clear();
}

void ChromeTrace::WriteHandOver(Track track, uint64_t header, const std::vector<TraceEntry>& requests) {
    const std::string id = IdOf(track, header);
    for (const TraceEntry& request : requests) {
        file_.BeginBar(track, id, request.Text(), request.Microseconds);
        file_.EndBar(track, id, request.Text(), request.Microseconds + request.Duration);
    }
    const TraceEntry& first = requests.front();
    const TraceEntry& last = requests.back();
    const Track thread = ThreadTrack(last.Process, last.Thread);
    file_.Span(thread, "hand over " + NameOf(header), first.Microseconds,
               last.Microseconds + last.Duration - first.Microseconds, "header", "");
    file_.Arrow(TimelineFile::Flow::Passes, thread, id, first.Microseconds);
}

void ChromeTrace::FollowRun(Track track, const TraceEntry& entry) {
    if (entry.Code == ArmChannel || entry.Code == DisarmChannel) {
        ChannelState& channel = channels_[track];
        channel.Runs = entry.Code == ArmChannel;
        channel.DrySince.reset();
    }
}

void ChromeTrace::BeginInCard(Track track, uintptr_t cookie, uint64_t header, int64_t time) {
    ChannelState& channel = channels_[track];
    if (channel.DrySince && *channel.DrySince < time) {
        file_.Mark(track, "ran dry", *channel.DrySince,
                   "\"microseconds\":" + std::to_string(time - *channel.DrySince));
    }
    channel.DrySince.reset();
    channel.InCard[cookie].push_back(header);
    file_.BeginBar(track, IdOf(track, header), "in the card", time);
    WriteCounter(track, time);
}

void ChromeTrace::EndInCard(Track track, const TraceEntry& entry) {
    ChannelState& channel = channels_[track];
    if (const uint64_t header = TakeFirst(channel.InCard, CookieOf(entry))) {
        file_.EndBar(track, IdOf(track, header), "in the card", entry.Microseconds);
        WriteCounter(track, entry.Microseconds);
        if (channel.Runs && channel.InCard.empty()) {
            channel.DrySince = entry.Microseconds;
        }
    }
}

void ChromeTrace::Write(const HeaderEvent& event) {
    const Track track = CardTrack(event.Card, event.Channel);
    const Track thread = ThreadTrack(event.Process, event.Thread);
    WriteMutexWaits(event);
    switch (event.What) {
    case HeaderEvent::Kind::Queued:
        BeginHeader(track, thread, event);
        break;
    case HeaderEvent::Kind::Taken:
        file_.EndSpan(thread, event.Microseconds);
        break;
    case HeaderEvent::Kind::Refused:
        file_.EndSpan(thread, event.Microseconds);
        EndHeader(track, event);
        break;
    case HeaderEvent::Kind::Returned:
        if (const uint64_t header = EndHeader(track, event)) {
            file_.Span(thread, "callback of " + NameOf(header), event.Microseconds, 0, "header", "");
            file_.Arrow(TimelineFile::Flow::Ends, thread, IdOf(track, header), event.Microseconds);
        }
        break;
    }
}

void ChromeTrace::BeginHeader(Track track, Track thread, const HeaderEvent& event) {
    ChannelState& channel = channels_[track];
    const uint64_t header = ++channel.Headers;
    channel.Out[reinterpret_cast<uintptr_t>(event.Header)].push_back(header);
    file_.BeginBar(track, IdOf(track, header), NameOf(header), event.Microseconds);
    file_.BeginSpan(thread, "bring " + NameOf(header), event.Microseconds);
    file_.Arrow(TimelineFile::Flow::Begins, thread, IdOf(track, header), event.Microseconds);
    WriteCounter(track, event.Microseconds);
}

uint64_t ChromeTrace::EndHeader(Track track, const HeaderEvent& event) {
    const uint64_t header = TakeFirst(channels_[track].Out, reinterpret_cast<uintptr_t>(event.Header));
    if (header != 0) {
        file_.EndBar(track, IdOf(track, header), NameOf(header), event.Microseconds);
        WriteCounter(track, event.Microseconds);
    }
    return header;
}

// Threads note their headers side by side, so a count may come after a greater one.
void ChromeTrace::WriteMutexWaits(const HeaderEvent& event) {
    uint64_t& written = mutexWaits_[event.Process];
    if (event.MutexWaits > written) {
        written = event.MutexWaits;
        const Track track{FirstProgram + event.Process, 0};
        file_.Name(track, "program " + std::to_string(event.Process), "mutexes");
        file_.Counter(track, "waits for shared mutexes", event.Microseconds,
                      "\"waits\":" + std::to_string(event.MutexWaits));
    }
}

void ChromeTrace::WriteCounter(Track track, int64_t time) {
    const ChannelState& channel = channels_[track];
    file_.Counter(track, TrackName(track.Row) + ": headers", time,
                  "\"with the driver\":" + std::to_string(CountAll(channel.Out)) +
                      ",\"in the card\":" + std::to_string(CountAll(channel.InCard)));
}

}  // namespace simulator
