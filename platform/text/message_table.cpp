// FormatMessageW: the texts of a module's message table, as the table has them.
#include <windows.h>

#include <algorithm>
#include <cstring>
#include <string_view>

#include "platform/loader/resources.h"

namespace {

// The table as it lies in the resource: a count of blocks, then the blocks. A block's entries, one
// for each number from Low to High, begin at Offset from the table's begin. Only the first block is looked
// at.
struct MessageTable {
    DWORD Count;
    DWORD Low;
    DWORD High;
    DWORD Offset;
};
struct MessageEntry {
    WORD Length;  // of the whole entry
    WORD Flags;   // 0: 8-bit text
};

template <typename T>
T ReadAt(const platform::Resource& table, size_t position) {
    T value{};
    if (position + sizeof(T) <= table.Size) {
        std::memcpy(&value, table.Data + position, sizeof(T));
    }
    return value;
}

// Filled up with terminators to a multiple of four; empty when there is no such message.
std::string_view FindMessage(const platform::Resource& table, DWORD id) {
    const auto header = ReadAt<MessageTable>(table, 0);
    if (id < header.Low || id > header.High) {
        return {};
    }
    size_t position = header.Offset;
    for (DWORD current = header.Low; current < id; ++current) {
        position += ReadAt<MessageEntry>(table, position).Length;
    }
    const auto entry = ReadAt<MessageEntry>(table, position);
    if (entry.Length < sizeof entry || position + entry.Length > table.Size) {
        return {};
    }
    return {reinterpret_cast<const char*>(table.Data) + position + sizeof entry, entry.Length - sizeof entry};
}

}  // namespace

DWORD WINAPI FormatMessageW(DWORD, LPCVOID source, DWORD id, DWORD, LPWSTR buffer, DWORD size, va_list*) {
    platform::Resource table;
    const auto module = static_cast<HMODULE>(const_cast<LPVOID>(source));
    if (!platform::FindModuleResource(module, RT_MESSAGETABLE, MAKEINTRESOURCEW(1), &table)) {
        return 0;
    }
    const std::string_view message = FindMessage(table, id);
    const size_t length = std::min(message.find('\0'), message.size());
    if (length == 0 || length >= size) {
        SetLastError(ERROR_MR_MID_NOT_FOUND);
        return 0;
    }
    std::copy_n(message.begin(), length, buffer);
    buffer[length] = 0;
    return static_cast<DWORD>(length);
}
