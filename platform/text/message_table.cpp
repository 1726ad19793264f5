// FormatMessageW: the texts of a module's message table.
//
// Offered: FORMAT_MESSAGE_FROM_HMODULE into the caller's buffer, without insertion strings, lines as
// the table has them.
#include <windows.h>

#include <algorithm>
#include <cstring>
#include <optional>
#include <string>

#include "platform/loader/resources.h"

namespace {

constexpr WORD UnicodeEntry = 1;

// The table as it lies in the resource: a count of blocks, then the blocks. A block's entries, one
// for each number from Low to High, begin at Offset from the table's begin.
struct MessageBlock {
    DWORD Low;
    DWORD High;
    DWORD Offset;
};
struct MessageEntry {
    WORD Length;  // of the whole entry
    WORD Flags;
};

template <typename T>
bool ReadAt(const platform::Resource& table, size_t position, T* value) {
    if (position + sizeof(T) > table.Size) {
        return false;
    }
    std::memcpy(value, table.Data + position, sizeof(T));
    return true;
}

// Where the entry of message `id` begins.
std::optional<size_t> FindEntry(const platform::Resource& table, DWORD id) {
    DWORD count = 0;
    if (!ReadAt(table, 0, &count)) {
        return std::nullopt;
    }
    MessageBlock block = {};
    for (DWORD i = 0; i < count && ReadAt(table, sizeof count + i * sizeof block, &block); ++i) {
        if (id < block.Low || id > block.High) {
            continue;
        }
        size_t position = block.Offset;
        MessageEntry entry = {};
        for (DWORD current = block.Low; current < id; ++current) {
            if (!ReadAt(table, position, &entry)) {
                return std::nullopt;
            }
            position += entry.Length;
        }
        return position;
    }
    return std::nullopt;
}

std::optional<std::u16string> FindMessage(const platform::Resource& table, DWORD id) {
    const std::optional<size_t> position = FindEntry(table, id);
    MessageEntry entry = {};
    if (!position || !ReadAt(table, *position, &entry) || entry.Length < sizeof entry ||
        *position + entry.Length > table.Size) {
        return std::nullopt;
    }

    const BYTE* begin = table.Data + *position + sizeof entry;
    const size_t bytes = entry.Length - sizeof entry;
    std::u16string text;
    if (entry.Flags & UnicodeEntry) {
        text.resize(bytes / sizeof(WCHAR));
        std::memcpy(text.data(), begin, text.size() * sizeof(WCHAR));
    } else {
        text.assign(begin, begin + bytes);
    }
    // Entries are filled up with terminators to a multiple of four.
    text.erase(std::min(text.find(u'\0'), text.size()));
    return text;
}

// Replaces the escapes after a per cent sign. None when the text wants an insertion string.
std::optional<std::u16string> Expand(const std::u16string& text, bool ignoreInserts) {
    std::u16string expanded;
    for (size_t i = 0; i < text.size(); ++i) {
        if (text[i] != u'%' || i + 1 == text.size()) {
            expanded += text[i];
            continue;
        }
        const WCHAR escape = text[++i];
        if (escape == u'0') {
            break;
        }
        if (escape >= u'1' && escape <= u'9') {
            if (!ignoreInserts) {
                return std::nullopt;
            }
            expanded += u'%';
        }
        if (escape == u'n') {
            expanded += u"\r\n";
        } else {
            expanded += escape;
        }
    }
    return expanded;
}

DWORD Fail(DWORD error) {
    SetLastError(error);
    return 0;
}

}  // namespace

DWORD WINAPI FormatMessageW(DWORD flags, LPCVOID source, DWORD id, DWORD language, LPWSTR buffer, DWORD size,
                            va_list*) {
    if ((flags & ~DWORD{FORMAT_MESSAGE_IGNORE_INSERTS}) != FORMAT_MESSAGE_FROM_HMODULE || !buffer) {
        return Fail(ERROR_INVALID_PARAMETER);
    }

    platform::Resource table;
    const auto module = static_cast<HMODULE>(const_cast<LPVOID>(source));
    if (!platform::FindModuleResource(module, RT_MESSAGETABLE, MAKEINTRESOURCEW(1), &table)) {
        return 0;
    }
    if (language != 0 && language != table.Language) {
        return Fail(ERROR_RESOURCE_LANG_NOT_FOUND);
    }
    const std::optional<std::u16string> message = FindMessage(table, id);
    if (!message) {
        return Fail(ERROR_MR_MID_NOT_FOUND);
    }
    const std::optional<std::u16string> text = Expand(*message, (flags & FORMAT_MESSAGE_IGNORE_INSERTS) != 0);
    if (!text) {
        return Fail(ERROR_INVALID_PARAMETER);
    }
    if (text->size() >= size) {
        return Fail(ERROR_INSUFFICIENT_BUFFER);
    }
    text->copy(buffer, text->size());
    buffer[text->size()] = 0;
    return static_cast<DWORD>(text->size());
}
