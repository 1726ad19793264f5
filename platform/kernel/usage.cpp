#include "platform/inspect.h"
#include "platform/kernel/handles.h"
#include "platform/kernel/memory.h"
#include "platform/kernel/thread_object.h"
#include "platform/kernel/wait/mutex_object.h"
#include "platform/window/user_object.h"

namespace platform {

Usage CurrentUsage() {
    return {OpenHandleCount(),     RunningThreadCount(), GlobalBlockCount(),
            HeapBlockCount(),      HeldMutexCount(),     static_cast<int>(WindowHandles().size()),
            OtherUserObjectCount()};
}

}  // namespace platform
