// LoadStringW: the strings of a module's resources. They lie in blocks of sixteen, each string
// counted and without a terminator.
#include <windows.h>

#include <algorithm>
#include <cstring>
#include <string>

#include "platform/loader/resources.h"

namespace {

constexpr UINT BlockLength = 16;

// False when the block ends before the string.
bool StringInBlock(const platform::Resource& block, UINT index, std::u16string* text) {
    size_t position = 0;
    for (UINT i = 0;; ++i) {
        WORD length = 0;
        if (position + sizeof length > block.Size) {
            return false;
        }
        std::memcpy(&length, block.Data + position, sizeof length);
        position += sizeof length;
        if (position + length * sizeof(WCHAR) > block.Size) {
            return false;
        }
        if (i == index) {
            text->resize(length);
            std::memcpy(text->data(), block.Data + position, length * sizeof(WCHAR));
            return true;
        }
        position += length * sizeof(WCHAR);
    }
}

}  // namespace

// A string cut to fit still gets its terminator. With no room at all nothing is written; asking for
// the string's place in the module (a size of 0) is not offered.
int WINAPI LoadStringW(HINSTANCE module, UINT id, LPWSTR buffer, int size) {
    if (!buffer || size <= 0) {
        return 0;
    }
    buffer[0] = 0;
    platform::Resource block;
    std::u16string text;
    if (!platform::FindModuleResource(module, RT_STRING, MAKEINTRESOURCEW(id / BlockLength + 1), &block)) {
        return 0;
    }
    if (!StringInBlock(block, id % BlockLength, &text) || text.empty()) {
        SetLastError(ERROR_RESOURCE_NAME_NOT_FOUND);
        return 0;
    }
    const size_t length = std::min(text.size(), static_cast<size_t>(size) - 1);
    text.copy(buffer, length);
    buffer[length] = 0;
    return static_cast<int>(length);
}
