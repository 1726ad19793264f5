// What attached modules have taken of the system and not given back: their calls come by here.
#pragma once

#include <windows.h>

#include <tuple>

#include "simulator/attach.h"

namespace simulator::windows {

enum class Resource { Handle, RegistryKey, EventSource, GlobalBlock, HeapBlock, UserObject };
inline constexpr size_t ResourceKinds = 6;

// No note is made of nothing, which is what a call takes that fails.
void NoteTaken(Resource kind, const void* what);
void NoteGivenBack(Resource kind, const void* what);

template <typename... Arguments>
auto LastOf(Arguments... arguments) {
    return std::get<sizeof...(Arguments) - 1>(std::tuple(arguments...));
}

// The system's function, with a note of what it returns.
template <Resource Kind, auto Function>
struct Takes;
template <Resource Kind, typename Result, typename... Arguments, Result(WINAPI* Function)(Arguments...)>
struct Takes<Kind, Function> {
    static Result WINAPI Call(Arguments... arguments) {
        Result taken = Function(arguments...);
        NoteTaken(Kind, taken);
        return taken;
    }
};

// The same for one that leaves a registry key behind its last argument.
template <auto Function>
struct TakesKey;
template <typename... Arguments, LONG(WINAPI* Function)(Arguments...)>
struct TakesKey<Function> {
    static LONG WINAPI Call(Arguments... arguments) {
        const LONG result = Function(arguments...);
        if (result == ERROR_SUCCESS) {
            NoteTaken(Resource::RegistryKey, *LastOf(arguments...));
        }
        return result;
    }
};

// The same for one that gives its last argument back. It is gone before another thread can be given the same.
template <Resource Kind, auto Function>
struct GivesBack;
template <Resource Kind, typename Result, typename... Arguments, Result(WINAPI* Function)(Arguments...)>
struct GivesBack<Kind, Function> {
    static Result WINAPI Call(Arguments... arguments) {
        NoteGivenBack(Kind, LastOf(arguments...));
        return Function(arguments...);
    }
};

}  // namespace simulator::windows
