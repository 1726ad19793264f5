// The faults that wait for their request or completion.
#pragma once

#include <optional>
#include <vector>

#include "simulator/trace/fault.h"

namespace simulator {

// The machine's lock guards it.
class FaultList {
public:
    unsigned Add(const Fault& fault);
    void Clear() { faults_.clear(); }
    FaultStatus StatusOf(unsigned fault) const;  // by the number that Add answered

    // A request, or a completion, has come: it is counted for every fault that it matches. The fault that
    // strikes it; nothing when none does.
    std::optional<Fault> Strike(uint32_t code) { return Next(code, false); }
    std::optional<Fault> StrikeCompletion() { return Next(Fault::Completion, true); }

private:
    struct Waiting {
        Fault What;
        FaultStatus Status;
    };
    std::optional<Fault> Next(uint32_t code, bool completion);

    std::vector<Waiting> faults_;
};

}  // namespace simulator
