// What is to be said at the end of a run: lines "key: value", or one JSON object with the same keys.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <optional>
#include <string>
#include <vector>

namespace kestvox {

// How a run came out.
struct RunOutcome {
    std::optional<std::string> Command;  // nothing: it is the run of another program
    std::string Problem;                 // what ended the run before its time, or empty
    std::vector<std::string> Losses;     // what was not played or recorded as asked, one line each
    std::optional<int> Status;           // the exit status

    bool IsGood() const { return Status.value_or(0) == 0 && Problem.empty() && Losses.empty(); }
};

class Report {
public:
    // What is added from here on belongs to a stream of its own, until EndStreams.
    void BeginStream();
    void EndStreams() { ofStream_ = false; }
    size_t StreamCount() const { return streams_.size(); }

    void Add(const char* key, const std::string& text);
    void Add(const char* key, uint64_t value);
    void Add(const char* key, int64_t value);
    void Add(const char* key, unsigned value) { Add(key, uint64_t{value}); }
    // Nothing is "none", or null.
    template <typename Value>
    void Add(const char* key, const std::optional<Value>& value) {
        value ? Add(key, *value) : AddLine(key, "none", "null");
    }

    void PrintText(std::FILE* out) const;

    // One object with "streams", the keys that belong to no stream, "problem" (null: none) and "losses", and
    // with "command" and "status" where the outcome has them.
    std::string Json(const RunOutcome& outcome) const;

private:
    struct Line {
        const char* Key;
        std::string Text;
        std::string Json;
    };
    using Lines = std::vector<Line>;

    void AddLine(const char* key, std::string text, std::string json);

    bool ofStream_ = false;
    std::vector<Lines> streams_;
    Lines rest_;
};

}  // namespace kestvox
