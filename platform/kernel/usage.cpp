#include "platform/inspect.h"
#include "platform/kernel/handles.h"
#include "platform/kernel/memory.h"
#include "platform/kernel/mutex_object.h"
#include "platform/kernel/thread_object.h"

namespace platform {

Usage CurrentUsage() {
    return {OpenHandleCount(), RunningThreadCount(), GlobalBlockCount(), HeapBlockCount(), HeldMutexCount()};
}

}  // namespace platform
