// Requests that go wrong on demand.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace simulator {

struct Fault {
    enum class Kind {
        Fail,   // the request fails and has no effect
        Pend,   // the request takes effect but is reported as pending
        Short,  // an answer comes back with one byte too few
        Die,    // the process is killed when the request has been served, whatever came of it
        Late,   // a completion: delivered `Delay` microseconds later
        Twice,  // a completion: delivered twice
        Again,  // a completion: delivered, and once more `Delay` microseconds later
        Lost,   // a completion: never delivered
    };
    static constexpr uint32_t AnyCode = 0;
    static constexpr uint32_t Completion = 1;  // no request: the kinds of completions

    Kind What = Kind::Fail;
    uint32_t Code = AnyCode;  // request code, AnyCode, or Completion
    unsigned Nth = 1;         // the n-th matching one from now, counted from 1; 0: every one
    uint32_t Error = 31;      // ERROR_GEN_FAILURE
    int64_t Delay = 10000;
};

// What has become of a fault that waits for its request or completion.
struct FaultStatus {
    bool Struck = false;
    uint64_t Seen = 0;  // matching ones that have come
};

// A fault as a user writes it, for example "QUEUE_BUFFER:3", "any:10:pending" or "completion:1:late=20000".
// Letters may be of either case. Nothing when the text is not of the form that FaultSyntax tells.
std::optional<Fault> ParseFault(std::string_view text);

// As ParseFault reads it.
const char* FaultName(Fault::Kind kind);

// The forms that ParseFault takes, in two lines for a user to read.
std::string FaultSyntax();

}  // namespace simulator
