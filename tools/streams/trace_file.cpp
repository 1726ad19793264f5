#include "tools/streams/trace_file.h"

#include <algorithm>
#include <string_view>
#include <utility>

namespace kestvox {
namespace {

constexpr std::string_view BetweenEvents = ",\n";
constexpr size_t LongestEnd = 4096;  // of the file: its last events, and room for how it closes

}  // namespace

void TraceFile::Append(Event event) {
    const std::lock_guard guard(mutex_);
    waiting_.push_back(std::move(event));
}

void TraceFile::Advance() {
    {
        const std::lock_guard guard(mutex_);
        taken_.swap(waiting_);
    }
    for (const Event& taken : taken_) {
        std::visit([this](const auto& event) { trace_.Write(event); }, taken);
        WriteText();
    }
    taken_.clear();
}

void TraceFile::WriteText() {
    const std::string_view text = text_.view();
    file_.Write({text.data(), text.size()});
    text_.str({});
}

void TraceFile::Finish() {
    Advance();
    file_.Flush();
    if (!file_.Problem().empty() && file_.IsRegular()) {
        CutAfterLastEvent();
    }
    trace_.Finish();
    WriteText();
    file_.Commit();
}

// Far enough before the end that the close fits where the last events were.
void TraceFile::CutAfterLastEvent() {
    const uint64_t written = file_.Flush();
    const uint64_t from = written - std::min<uint64_t>(written, LongestEnd);
    const std::vector<char> end = file_.ReadAt(from, static_cast<size_t>(written - from));
    const std::string_view text(end.data(), end.size());
    constexpr size_t Close = 64;
    const size_t at = text.rfind(BetweenEvents, text.size() > Close ? text.size() - Close : 0);
    if (at != std::string_view::npos) {
        file_.CutTo(from + at);
    }
}

}  // namespace kestvox
