// The machine's event log: one ring of records for all sources. When it is full, a new record takes
// the oldest one's place. Records hold no strings and no data.
#include <windows.h>

#include <algorithm>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>

#include "platform/inspect.h"
#include "platform/kernel/call_failure.h"
#include "platform/kernel/handles.h"
#include "platform/machine.h"

namespace platform {

namespace {

class EventRing {
public:
    static constexpr size_t MaxSourceLength = 63;

    void Initialize() { lock_.Initialize(); }

    void Append(std::u16string_view source, WORD type, WORD category, DWORD id) {
        const std::lock_guard hold(lock_);
        Entry& entry = entries_[written_ % Capacity];
        entry.SourceLength = static_cast<uint32_t>(source.copy(entry.Source, MaxSourceLength));
        entry.Type = type;
        entry.Category = category;
        entry.Id = id;
        ++written_;
    }

    std::vector<EventRecord> Read() {
        const std::lock_guard hold(lock_);
        std::vector<EventRecord> records;
        for (uint64_t i = written_ - std::min<uint64_t>(written_, Capacity); i < written_; ++i) {
            const Entry& entry = entries_[i % Capacity];
            records.push_back(
                {std::u16string(entry.Source, entry.SourceLength), entry.Type, entry.Category, entry.Id});
        }
        return records;
    }

private:
    static constexpr size_t Capacity = 512;

    struct Entry {
        WCHAR Source[MaxSourceLength];
        uint32_t SourceLength;
        WORD Type;
        WORD Category;
        DWORD Id;
    };

    SharedMutex lock_;
    uint64_t written_;  // in the machine's life
    Entry entries_[Capacity];
};

constexpr MachineRegion<EventRing> RingRegion("eventlog");

class EventSource : public KernelObject {
public:
    static constexpr HandleKind ObjectKind = HandleKind::EventSource;

    explicit EventSource(std::u16string name) : KernelObject(ObjectKind), Name(std::move(name)) {}

    const std::u16string Name;
};

}  // namespace

std::vector<EventRecord> EventLog() {
    return RingRegion->Read();
}

}  // namespace platform

using namespace platform;

// This machine's log only: there is no other computer to name as the server.
HANDLE WINAPI RegisterEventSourceW(LPCWSTR server, LPCWSTR source) {
    if (CallFails("RegisterEventSourceW")) {
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
        return nullptr;
    }
    if (server || !source || std::u16string_view(source).size() > EventRing::MaxSourceLength) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return nullptr;
    }
    const HANDLE handle = OpenHandle(std::make_shared<EventSource>(source));
    if (!handle) {
        SetLastError(ERROR_NO_SYSTEM_RESOURCES);
    }
    return handle;
}

BOOL WINAPI ReportEventW(HANDLE handle, WORD type, WORD category, DWORD id, PSID, WORD stringCount,
                         DWORD dataSize, LPCWSTR*, LPVOID) {
    const std::shared_ptr<EventSource> source = FindObject<EventSource>(handle);
    if (!source) {
        SetLastError(ERROR_INVALID_HANDLE);
        return FALSE;
    }
    if (stringCount != 0 || dataSize != 0) {
        SetLastError(ERROR_NOT_SUPPORTED);
        return FALSE;
    }
    RingRegion->Append(source->Name, type, category, id);
    return TRUE;
}

BOOL WINAPI DeregisterEventSource(HANDLE handle) {
    if (CloseHandleOfKinds(handle, {HandleKind::EventSource})) {
        return TRUE;
    }
    SetLastError(ERROR_INVALID_HANDLE);
    return FALSE;
}
