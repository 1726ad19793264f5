#include "tests/clock/clock_script.h"

#include <algorithm>
#include <cstdio>

namespace {

constexpr int64_t Tick = 1000;  // microseconds

bool IsWait(const std::string& line) {
    return line.starts_with("stall") || line.ends_with("ticks");
}

// The time between a request and the next; empty when it is none or the request's own.
std::string TimeBetween(const simulator::TraceEntry& entry, const std::string& text,
                        const simulator::TraceEntry& next) {
    const int64_t passed = next.Microseconds - entry.Microseconds;
    if (passed == 0 || text == "stall " + std::to_string(passed)) {
        return "";
    }
    if (next.Microseconds % Tick != 0 || text.starts_with("stall")) {
        return std::to_string(passed) + " microseconds";
    }
    return std::to_string(next.Microseconds / Tick - entry.Microseconds / Tick) + " ticks";
}

unsigned TicksOf(unsigned microseconds) {
    return (microseconds + 999) / 1000 + 1;
}

}  // namespace

Lines LinesOf(const std::string& card, Lines requests) {
    for (std::string& request : requests) {
        request = IsWait(request) ? request : card + request;
    }
    return requests;
}

Lines TimedLines(std::span<const simulator::TraceEntry> entries) {
    Lines lines;
    for (size_t i = 0; i < entries.size(); ++i) {
        const std::string text = entries[i].Text();
        lines.push_back(IsWait(text) ? text : std::to_string(entries[i].Card) + " " + text);
        const std::string time = i + 1 < entries.size() ? TimeBetween(entries[i], text, entries[i + 1]) : "";
        if (!time.empty()) {
            lines.push_back(time);
        }
    }
    return lines;
}

Lines InitialisationIn(const Lines& discovery, unsigned card) {
    const std::string number = std::to_string(card) + " ";
    const auto after = [&discovery](const std::string& line) {
        return std::find(discovery.rbegin(), discovery.rend(), line).base();
    };
    return {after(number + "BIND_HANDLE " + number + "control"), after(number + "RELEASE_CHANNEL") - 1};
}

std::string Wait(unsigned microseconds) {
    return microseconds < 1000 ? "stall " + std::to_string(microseconds)
                               : std::to_string(TicksOf(microseconds)) + " ticks";
}

std::string Wait(unsigned first, unsigned second) {
    return std::to_string(TicksOf(first) + 1 + TicksOf(second)) + " ticks";
}

Lines ResyncPulse() {
    return {"write port 0 = 04 / 04",  Wait(1000), "write port 0 = 00 / 04",
            "write card 17 = 00 / 80", "stall 1",  "write card 17 = 80 / 80"};
}

Lines StatusByte(unsigned index, unsigned byte) {
    char select[32];
    char write[32];
    std::snprintf(select, sizeof select, "write card 27 = %02X / 0F", index);
    std::snprintf(write, sizeof write, "write card 26 = %02X / FF", byte);
    return {select, "read card 26", write};
}

Lines StatusRate(unsigned byte0, unsigned byte4) {
    return StatusByte(0, byte0) + StatusByte(2, 0x2C) + StatusByte(3, 0) + StatusByte(4, byte4);
}

void ClockTest::Load() {
    ASSERT_EQ(waveOutGetNumDevs(), Cards().CardCount() * 2);
}

Lines ClockTest::Run(WavePlayer& player, UINT device, DWORD rate, MMRESULT result) {
    Load();
    Cards().ClearTrace();
    EXPECT_EQ(player.Open(device, PcmFormat(rate, 2, 16)), result);
    Lines lines = TimedLines(Cards().Trace());
    const auto endsWith = [](const char* text) {
        return [text](const std::string& line) { return line.ends_with(text); };
    };
    const auto claimed = std::find_if(lines.begin(), lines.end(), endsWith("ACQUIRE_CHANNEL"));
    if (claimed != lines.end()) {
        lines.erase(lines.begin(), claimed + 1);
    }
    // The mono bit is the run's last write; a run that failed is followed by the close.
    auto last = std::find_if(lines.begin(), lines.end(), endsWith("/ 20"));
    if (last != lines.end()) {
        lines.erase(last + 1, lines.end());
    } else {
        lines.erase(std::find_if(lines.begin(), lines.end(), endsWith("FLUSH_BUFFERS")), lines.end());
    }
    return lines;
}
