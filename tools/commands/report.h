// What a command has to say at its end: lines "key: value", or one JSON object with the same keys.
#pragma once

#include <cstdint>
#include <cstdio>
#include <optional>
#include <string>
#include <vector>

namespace kestvox {

class Report {
public:
    // What is added from here on belongs to a stream of its own, until EndStreams.
    void BeginStream();
    void EndStreams() { ofStream_ = false; }

    void Add(const char* key, uint64_t value);
    void Add(const char* key, int64_t value);
    void Add(const char* key, unsigned value) { Add(key, uint64_t{value}); }
    // Nothing is "none", or null.
    template <typename Value>
    void Add(const char* key, const std::optional<Value>& value) {
        value ? Add(key, *value) : AddLine(key, "none", "null");
    }

    void PrintText(std::FILE* out) const;

    // One object with "command", "streams", the keys that belong to no stream, "problem" (null: none),
    // "losses" and "status".
    std::string Json(const std::string& command, const std::string& problem,
                     const std::vector<std::string>& losses, int status) const;

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
