#include "report/gap_report.h"

#include <optional>

namespace kestvox {
namespace {

struct GapWords {
    const char* Gaps;
    const char* LongestGap;
    const char* FirstGap;
    const char* Singular;  // in sentences
    const char* IdleFrames;
};

constexpr GapWords Words[] = {
    {"underruns", "longest-underrun", "first-underrun", "underrun", "silent frames"},
    {"overruns", "longest-overrun", "first-overrun", "overrun", "dropped frames"},
};

}  // namespace

void AddGaps(Report& report, std::vector<std::string>& losses, const std::string& stream, StreamKind kind,
             uint64_t idleFrames, const simulator::Gaps& gaps) {
    const GapWords& words = Words[kind == StreamKind::Playing ? 0 : 1];
    const std::optional<uint64_t> first = gaps.Count != 0 ? std::optional(gaps.First) : std::nullopt;
    report.Add(words.Gaps, gaps.Count);
    report.Add(words.LongestGap, gaps.Longest);
    report.Add(words.FirstGap, first);
    if (first) {
        losses.push_back(stream + ": " + Counted(gaps.Count, words.Singular) + " (" +
                         std::to_string(idleFrames) + " " + words.IdleFrames + " in all), the longest " +
                         Counted(gaps.Longest, "frame") + ", the first at frame " + std::to_string(*first));
    }
}

std::string Counted(uint64_t count, const std::string& what) {
    return std::to_string(count) + " " + what + (count == 1 ? "" : "s");
}

}  // namespace kestvox
