#include "simulator/windows/holdings.h"

#include <array>
#include <mutex>
#include <set>

#include "simulator/machine/host.h"

namespace simulator {
namespace {

// Never destroyed: modules give back what they hold when the process ends.
struct Notes {
    host::Lock Lock;
    std::array<std::set<const void*>, windows::ResourceKinds> Taken;
};

Notes& TheNotes() {
    static Notes& all = *new Notes;
    return all;
}

std::set<const void*>& Of(windows::Resource kind) {
    return TheNotes().Taken[static_cast<size_t>(kind)];
}

}  // namespace

namespace windows {

void NoteTaken(Resource kind, const void* what) {
    if (what == nullptr || what == INVALID_HANDLE_VALUE) {
        return;
    }
    const DWORD error = GetLastError();  // tells a success from another: ERROR_ALREADY_EXISTS
    {
        const std::lock_guard guard(TheNotes().Lock);
        Of(kind).insert(what);
    }
    SetLastError(error);
}

void NoteGivenBack(Resource kind, const void* what) {
    const std::lock_guard guard(TheNotes().Lock);
    Of(kind).erase(what);
}

}  // namespace windows

Holdings CurrentHoldings() {
    using windows::Resource;
    const std::lock_guard guard(TheNotes().Lock);
    return {Of(Resource::Handle).size(),      Of(Resource::RegistryKey).size(),
            Of(Resource::EventSource).size(), Of(Resource::GlobalBlock).size(),
            Of(Resource::HeapBlock).size(),   Of(Resource::UserObject).size()};
}

}  // namespace simulator
