#include "simulator/requests/completion_queue.h"

#include <algorithm>

#include "simulator/clock/sample_clock.h"

namespace simulator {

std::optional<Fault::Kind> CompletionQueue::Add(uint32_t file, const CompletionTarget& target,
                                                ULONG_PTR cookie, int64_t now, FaultList& faults) {
    if (!target.Routine) {
        return std::nullopt;
    }
    Call call{file, target, cookie, now};
    const std::optional<Fault> fault = faults.StrikeCompletion();
    const Fault::Kind kind = fault ? fault->What : Fault::Kind::Late;
    if (!fault || kind == Fault::Kind::Twice || kind == Fault::Kind::Again) {
        ready_.insert(ready_.end(), kind == Fault::Kind::Twice ? 2 : 1, call);
    }
    if (fault && (kind == Fault::Kind::Late || kind == Fault::Kind::Again)) {
        call.Due = now + fault->Delay * 1000;
        late_.push_back(call);
    }
    return fault ? std::optional(kind) : std::nullopt;
}

int64_t CompletionQueue::NextLate() const {
    int64_t next = Never;
    for (const Call& call : late_) {
        next = std::min(next, call.Due);
    }
    return next;
}

size_t CompletionQueue::Ripen(int64_t now) {
    const auto due =
        std::stable_partition(late_.begin(), late_.end(), [now](const Call& call) { return call.Due > now; });
    std::stable_sort(due, late_.end(), [](const Call& a, const Call& b) { return a.Due < b.Due; });
    const auto count = static_cast<size_t>(late_.end() - due);
    ready_.insert(ready_.end(), due, late_.end());
    late_.erase(due, late_.end());
    return count;
}

void CompletionQueue::Forget(uint32_t file) {
    const auto isIts = [file](const Call& call) { return call.File == file; };
    std::erase_if(ready_, isIts);
    std::erase_if(late_, isIts);
}

void CompletionQueue::Deliver() {
    const std::unique_lock<host::Lock> hold = Hold();
    std::vector<Call> calls;
    {
        const host::MachineGuard guard;
        calls.swap(ready_);
    }
    for (const Call& call : calls) {
        host::QueueCall(call.Target.Thread, call.Target.Routine, call.Cookie);
    }
}

}  // namespace simulator
