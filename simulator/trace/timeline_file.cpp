#include "simulator/trace/timeline_file.h"

#include <ostream>

namespace simulator {

TimelineFile::TimelineFile(std::ostream& out) : out_(out) {
    out_ << "{\"traceEvents\":[\n";
}

void TimelineFile::Finish() {
    out_ << "\n],\"displayTimeUnit\":\"ms\"}\n";
}

// Every event is one line; all but the first begin with the comma that parts it from the one before.
std::ostream& TimelineFile::Next() {
    out_ << (first_ ? "" : ",\n");
    first_ = false;
    return out_;
}

std::ostream& TimelineFile::Event(const char* phase, Track track, const std::string& name) {
    return Next() << "{\"ph\":\"" << phase << "\",\"name\":\"" << name << "\",\"pid\":" << track.Group
                  << ",\"tid\":" << track.Row;
}

void TimelineFile::Name(Track track, const std::string& group, const std::string& row) {
    if (groups_.insert(track.Group).second) {
        Next() << "{\"ph\":\"M\",\"name\":\"process_name\",\"pid\":" << track.Group
               << ",\"args\":{\"name\":\"" << group << "\"}}";
    }
    if (tracks_.insert(track).second) {
        Event("M", track, "thread_name") << ",\"args\":{\"name\":\"" << row << "\"}}";
    }
}

void TimelineFile::Span(Track track, const std::string& name, int64_t begin, int64_t length,
                        const std::string& category, const std::string& arguments) {
    Event("X", track, name) << ",\"cat\":\"" << category << "\",\"ts\":" << begin << ",\"dur\":" << length
                            << ",\"args\":{" << arguments << "}}";
}

void TimelineFile::BeginSpan(Track track, const std::string& name, int64_t time) {
    Event("B", track, name) << ",\"ts\":" << time << "}";
}

void TimelineFile::EndSpan(Track track, int64_t time) {
    Event("E", track, "") << ",\"ts\":" << time << "}";
}

void TimelineFile::BeginBar(Track track, const std::string& id, const std::string& name, int64_t time) {
    Event("b", track, name) << ",\"cat\":\"header\",\"id\":\"" << id << "\",\"ts\":" << time << "}";
}

void TimelineFile::EndBar(Track track, const std::string& id, const std::string& name, int64_t time) {
    Event("e", track, name) << ",\"cat\":\"header\",\"id\":\"" << id << "\",\"ts\":" << time << "}";
}

void TimelineFile::Mark(Track track, const std::string& name, int64_t time, const std::string& arguments) {
    Event("i", track, name) << ",\"s\":\"t\",\"ts\":" << time << ",\"args\":{" << arguments << "}}";
}

void TimelineFile::Counter(Track track, const std::string& name, int64_t time, const std::string& arguments) {
    Event("C", track, name) << ",\"ts\":" << time << ",\"args\":{" << arguments << "}}";
}

// An arrow passes by and ends at the span that is there, not at the next one.
void TimelineFile::Arrow(Flow flow, Track track, const std::string& id, int64_t time) {
    const char phase[] = {static_cast<char>(flow), 0};
    Event(phase, track, "header") << ",\"cat\":\"flow\",\"id\":\"" << id << "\",\"bp\":\"e\",\"ts\":" << time
                                  << "}";
}

}  // namespace simulator
