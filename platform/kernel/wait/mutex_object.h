// Mutexes: recursive, owned by a thread, abandoned when that thread ends or its process dies.
#pragma once

#include <pthread.h>

#include <memory>
#include <vector>

#include "platform/kernel/handles.h"
#include "platform/kernel/thread_object.h"
#include "platform/kernel/wait/named_mutexes.h"

namespace platform {

class MutexObject : public KernelObject, public std::enable_shared_from_this<MutexObject> {
public:
    static constexpr HandleKind ObjectKind = HandleKind::Mutex;

    MutexObject();                              // an unnamed mutex
    explicit MutexObject(NamedMutexUse named);  // a mutex of the machine
    ~MutexObject() override;

    // For the calling thread: WAIT_OBJECT_0, WAIT_ABANDONED (owned, but its last owner did not give it back)
    // or, when it cannot be had before the deadline, WAIT_TIMEOUT.
    DWORD Acquire(Deadline deadline);

    // False when the calling thread does not own the mutex.
    bool Release();

private:
    std::unique_ptr<MutexCore> unnamed_;
    NamedMutexUse named_;
    MutexCore* const core_;
};

// A thread that ends abandons the mutexes that it holds.
void AbandonHeldMutexes(std::vector<HeldMutex>& held);

// The child of a fork owns none of the mutexes that its parent holds: they are dropped without being
// released.
void ForgetHeldMutexes(std::vector<HeldMutex>& held);

int HeldMutexCount();

}  // namespace platform
