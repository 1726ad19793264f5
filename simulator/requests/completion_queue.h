// Finished buffers on their way to the threads that asked to hear of them.
#pragma once

#include <windows.h>

#include <cstdint>
#include <mutex>
#include <vector>

#include "simulator/machine/host.h"
#include "simulator/trace/fault_list.h"

namespace simulator {

// The thread and routine that one open file registered; none when Routine is null.
struct CompletionTarget {
    host::Thread Thread;
    uint64_t ThreadId = 0;
    device::ProcedureCall Routine = nullptr;
};

// Calls leave in the order in which they were added. The machine's lock is held by the caller of
// everything but Deliver and Hold.
class CompletionQueue {
public:
    // A buffer of that file is finished. Nothing comes of it when the file has no routine. Answers the fault
    // that struck its completion.
    std::optional<Fault::Kind> Add(uint32_t file, const CompletionTarget& target, ULONG_PTR cookie,
                                   int64_t now, FaultList& faults);

    // Late calls: when the next one is due, and moving those that are to where Deliver finds them. Ripen
    // answers how many there were.
    int64_t NextLate() const;
    size_t Ripen(int64_t now);

    // Whether Deliver would find a call. After a request that answers false, nothing that it set off is left.
    bool HasReady() const { return !ready_.empty(); }

    // Drops what has not been delivered for the file.
    void Forget(uint32_t file);

    // Queues the calls to their threads: when it returns, all that had been added before have been queued,
    // by this thread or another. Neither the machine's lock nor Hold's may be held.
    void Deliver();

    // Keeps Deliver, on any thread, from beginning: take it before the machine's lock and before
    // Forget, and no call for the file leaves after it.
    std::unique_lock<host::Lock> Hold() { return std::unique_lock<host::Lock>(delivering_); }

private:
    struct Call {
        uint32_t File;
        CompletionTarget Target;
        ULONG_PTR Cookie;
        int64_t Due;
    };

    host::Lock delivering_;
    std::vector<Call> ready_;
    std::vector<Call> late_;
};

}  // namespace simulator
