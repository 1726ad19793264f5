// What attached modules have taken of the system and not given back. Their calls of the functions that take
// and give back go through the templates here, which keep count.
#pragma once

#include <windows.h>

#include <tuple>

#include "simulator/attach.h"

namespace simulator::windows {

enum class Resource { Handle, RegistryKey, EventSource, GlobalBlock, HeapBlock, UserObject };
inline constexpr size_t ResourceKinds = 6;

// What a call answers when it fails, null or INVALID_HANDLE_VALUE, is not counted.
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

// The same for one that gives its last argument back. It is counted before the call, since after it another
// thread may be given the same one.
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
