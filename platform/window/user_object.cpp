#include "platform/window/user_object.h"

#include <algorithm>
#include <mutex>
#include <unordered_map>

namespace platform {

namespace {

constexpr unsigned ProcessShift = 32;

struct UserHandles {
    std::mutex Lock;  // guards the rest; taken after every other lock but the machine's
    std::unordered_map<void*, std::shared_ptr<UserObject>> Objects;
    uint32_t Last = 0x10010;  // below it lies the desktop's
};

// Never destroyed: threads may still end while the program does.
UserHandles& Handles() {
    static auto* const handles = new UserHandles;
    return *handles;
}

}  // namespace

void* OpenUserHandle(std::shared_ptr<UserObject> object) {
    const auto process = static_cast<ULONG_PTR>(GetCurrentProcessId());
    UserHandles& handles = Handles();
    const std::lock_guard hold(handles.Lock);
    handles.Last += 2;
    void* const handle = reinterpret_cast<void*>(process << ProcessShift | handles.Last);
    handles.Objects.emplace(handle, std::move(object));
    return handle;
}

std::shared_ptr<UserObject> FindUserObject(void* handle, UserObjectKind kind) {
    UserHandles& handles = Handles();
    const std::lock_guard hold(handles.Lock);
    const auto found = handles.Objects.find(handle);
    return found != handles.Objects.end() && found->second->Kind() == kind ? found->second : nullptr;
}

bool CloseUserHandle(void* handle, UserObjectKind kind) {
    std::shared_ptr<UserObject> object;  // ends after the lock is given back
    UserHandles& handles = Handles();
    const std::lock_guard hold(handles.Lock);
    const auto found = handles.Objects.find(handle);
    if (found == handles.Objects.end() || found->second->Kind() != kind) {
        return false;
    }
    object = std::move(found->second);
    handles.Objects.erase(found);
    return true;
}

std::vector<HWND> WindowHandles() {
    const std::lock_guard hold(Handles().Lock);
    std::vector<HWND> windows;
    for (const auto& [handle, object] : Handles().Objects) {
        if (object->Kind() == UserObjectKind::Window) {
            windows.push_back(static_cast<HWND>(handle));
        }
    }
    return windows;
}

int OtherUserObjectCount() {
    UserHandles& handles = Handles();
    const std::lock_guard hold(handles.Lock);
    return static_cast<int>(
        std::count_if(handles.Objects.begin(), handles.Objects.end(),
                      [&](const auto& entry) { return entry.second->Kind() != UserObjectKind::Window; }));
}

DWORD ProcessOfUserHandle(void* handle) {
    return static_cast<DWORD>(reinterpret_cast<ULONG_PTR>(handle) >> ProcessShift);
}

}  // namespace platform
