// The machine's registry: one tree of keys with values, in a machine region, so that every process
// of the machine sees the same one.
//
// Keys and values are entries of tables of fixed size, linked by index. Names compare without regard to case
// and keep the case they were made with. Results are system error codes. Every operation takes the store's
// lock itself. A process that dies during one leaves at worst an entry that nothing links to.
#pragma once

#include <windows.h>

#include <string>
#include <string_view>

#include "platform/machine.h"

namespace platform {

// Names a key for as long as it exists: a key made later at the same place in the table is another.
struct KeyReference {
    uint32_t Index;
    uint32_t Generation;
};

// What a caller asks of a value. A null pointer means that this part is not wanted.
struct ValueQuery {
    DWORD* Type;
    void* Data;
    DWORD* Size;  // in: room at Data in bytes; out: the value's size
};

class RegistryStore {
public:
    static constexpr size_t MaxKeys = 512;
    static constexpr size_t MaxValues = 1024;
    static constexpr size_t MaxNameLength = 255;  // characters
    static constexpr size_t MaxDataSize = 1024;   // bytes
    static constexpr uint32_t RootCount = 4;      // indices 0 to 3, generation 0, never deleted

    void Initialize();

    // Finds `path` (key names between backslashes; empty is `from` itself).
    LONG Open(KeyReference from, std::u16string_view path, KeyReference* key);

    // The same, and makes what is missing on the way.
    LONG Create(KeyReference from, std::u16string_view path, KeyReference* key);

    // Only a key without subkeys.
    LONG DeleteKey(KeyReference from, std::u16string_view path);

    LONG SetValue(KeyReference key, std::u16string_view name, DWORD type, const void* data, DWORD size);
    LONG QueryValue(KeyReference key, std::u16string_view name, const ValueQuery& query);
    LONG DeleteValue(KeyReference key, std::u16string_view name);

private:
    static constexpr uint32_t NoLink = 0;  // index 0 is a root and never linked to

    struct StoredName {
        WCHAR Text[MaxNameLength];
        uint16_t Length;

        void Assign(std::u16string_view text);
        std::u16string_view View() const { return {Text, Length}; }
        bool Is(std::u16string_view text) const;
    };
    struct Key {
        uint32_t InUse;
        uint32_t Generation;
        uint32_t NextSibling;
        uint32_t FirstChild;
        uint32_t FirstValue;
        StoredName Name;
    };
    struct Value {
        uint32_t InUse;
        uint32_t Next;
        DWORD Type;
        DWORD Size;
        StoredName Name;
        BYTE Data[MaxDataSize];
    };

    bool IsValid(KeyReference key) const;
    KeyReference ReferenceTo(uint32_t index) const { return {index, keys_[index].Generation}; }
    uint32_t FindChild(uint32_t parent, std::u16string_view name) const;
    LONG MakeChild(uint32_t parent, std::u16string_view name, uint32_t* child);
    uint32_t* FindValueLink(uint32_t key, std::u16string_view name);
    LONG MakeValue(std::u16string_view name, uint32_t* value);

    SharedMutex lock_;
    Key keys_[MaxKeys];
    Value values_[MaxValues];
};

}  // namespace platform
