// A file in the Chrome trace format, event by event. It opens in a timeline viewer.
#pragma once

#include <cstdint>
#include <iosfwd>
#include <set>
#include <string>
#include <utility>

namespace simulator {

// Times are microseconds. Names are written as they are: they have neither quotes nor backslashes.
// `arguments` is what a viewer shows beside an event, the members of a JSON object, as `"wait":3`; it may be
// empty.
class TimelineFile {
public:
    // A row of the picture, and the group that it stands in. A row is named before anything is written on it.
    struct Track {
        uint64_t Group;
        uint64_t Row;
        bool operator<(const Track& other) const {
            return std::pair(Group, Row) < std::pair(other.Group, other.Row);
        }
    };

    // Begins the file. `out` outlives the object.
    explicit TimelineFile(std::ostream& out);
    void Finish();  // nothing may be written after it

    // Does nothing when the track has its names already.
    void Name(Track track, const std::string& group, const std::string& row);

    // Spans of one track lie one after the other, or one inside the other.
    void Span(Track track, const std::string& name, int64_t begin, int64_t length,
              const std::string& category, const std::string& arguments);
    void BeginSpan(Track track, const std::string& name, int64_t time);
    void EndSpan(Track track, int64_t time);

    // Bars may lie across each other; those of one id are drawn together, one inside the other.
    void BeginBar(Track track, const std::string& id, const std::string& name, int64_t time);
    void EndBar(Track track, const std::string& id, const std::string& name, int64_t time);

    void Mark(Track track, const std::string& name, int64_t time, const std::string& arguments);
    void Counter(Track track, const std::string& name, int64_t time, const std::string& arguments);

    // An arrow from span to span, across tracks: from where it begins, by where it passes, to where it ends.
    // Each is at a span that begins or lasts at that time.
    enum class Flow : char { Begins = 's', Passes = 't', Ends = 'f' };
    void Arrow(Flow flow, Track track, const std::string& id, int64_t time);

private:
    std::ostream& Event(const char* phase, Track track, const std::string& name);
    std::ostream& Next();

    std::ostream& out_;
    bool first_ = true;
    std::set<uint64_t> groups_;  // that have a name
    std::set<Track> tracks_;     // ... and tracks
};

}  // namespace simulator
