#include "platform/registry/registry_store.h"

#include <algorithm>
#include <cstring>
#include <mutex>
#include <vector>

#include "platform/text/case.h"

namespace platform {

namespace {

// Takes the first key name off `*path`.
std::u16string_view TakeName(std::u16string_view* path) {
    const size_t end = std::min(path->find(u'\\'), path->size());
    const std::u16string_view name = path->substr(0, end);
    path->remove_prefix(std::min(end + 1, path->size()));
    return name;
}

}  // namespace

void RegistryStore::StoredName::Assign(std::u16string_view text) {
    text.copy(Text, text.size());
    Length = static_cast<uint16_t>(text.size());
}

bool RegistryStore::StoredName::Is(std::u16string_view text) const {
    return CompareIgnoringCase(View(), text) == 0;
}

void RegistryStore::Initialize() {
    lock_.Initialize();
    for (uint32_t root = 0; root < RootCount; ++root) {
        keys_[root].InUse = 1;
    }
}

bool RegistryStore::IsValid(KeyReference key) const {
    return keys_[key.Index].InUse && keys_[key.Index].Generation == key.Generation;
}

uint32_t RegistryStore::FindChild(uint32_t parent, std::u16string_view name) const {
    uint32_t child = keys_[parent].FirstChild;
    while (child != NoLink && !keys_[child].Name.Is(name)) {
        child = keys_[child].NextSibling;
    }
    return child;
}

LONG RegistryStore::MakeChild(uint32_t parent, std::u16string_view name, uint32_t* child) {
    if (name.empty() || name.size() > MaxNameLength) {
        return ERROR_INVALID_PARAMETER;
    }
    const auto* free = std::find_if(keys_ + RootCount, keys_ + MaxKeys,
                                    [](const Key& candidate) { return !candidate.InUse; });
    if (free == keys_ + MaxKeys) {
        return ERROR_NO_SYSTEM_RESOURCES;
    }
    *child = static_cast<uint32_t>(free - keys_);
    Key& key = keys_[*child];
    key.Name.Assign(name);
    key.FirstChild = NoLink;
    key.FirstValue = NoLink;
    key.NextSibling = keys_[parent].FirstChild;
    key.InUse = 1;
    keys_[parent].FirstChild = *child;
    return ERROR_SUCCESS;
}

LONG RegistryStore::Open(KeyReference from, std::u16string_view path, KeyReference* key) {
    const std::lock_guard hold(lock_);
    if (!IsValid(from)) {
        return ERROR_KEY_DELETED;
    }
    uint32_t current = from.Index;
    while (!path.empty()) {
        current = FindChild(current, TakeName(&path));
        if (current == NoLink) {
            return ERROR_FILE_NOT_FOUND;
        }
    }
    *key = ReferenceTo(current);
    return ERROR_SUCCESS;
}

LONG RegistryStore::Create(KeyReference from, std::u16string_view path, KeyReference* key) {
    const std::lock_guard hold(lock_);
    if (!IsValid(from)) {
        return ERROR_KEY_DELETED;
    }
    uint32_t current = from.Index;
    while (!path.empty()) {
        const std::u16string_view name = TakeName(&path);
        uint32_t child = FindChild(current, name);
        if (child == NoLink) {
            const LONG error = MakeChild(current, name, &child);
            if (error != ERROR_SUCCESS) {
                return error;
            }
        }
        current = child;
    }
    *key = ReferenceTo(current);
    return ERROR_SUCCESS;
}

LONG RegistryStore::DeleteKey(KeyReference from, std::u16string_view path) {
    const std::lock_guard hold(lock_);
    if (!IsValid(from)) {
        return ERROR_KEY_DELETED;
    }
    uint32_t parent = from.Index;
    uint32_t current = from.Index;
    while (!path.empty()) {
        parent = current;
        current = FindChild(current, TakeName(&path));
        if (current == NoLink) {
            return ERROR_FILE_NOT_FOUND;
        }
    }
    if (current == parent || keys_[current].FirstChild != NoLink) {
        return ERROR_ACCESS_DENIED;
    }

    uint32_t* link = &keys_[parent].FirstChild;
    while (*link != current) {
        link = &keys_[*link].NextSibling;
    }
    *link = keys_[current].NextSibling;
    for (uint32_t value = keys_[current].FirstValue; value != NoLink; value = values_[value].Next) {
        values_[value].InUse = 0;
    }
    ++keys_[current].Generation;
    keys_[current].InUse = 0;
    return ERROR_SUCCESS;
}

// The link that leads to the value, or the empty link at the end of the key's list.
uint32_t* RegistryStore::FindValueLink(uint32_t key, std::u16string_view name) {
    uint32_t* link = &keys_[key].FirstValue;
    while (*link != NoLink && !values_[*link].Name.Is(name)) {
        link = &values_[*link].Next;
    }
    return link;
}

LONG RegistryStore::MakeValue(std::u16string_view name, uint32_t* value) {
    if (name.size() > MaxNameLength) {
        return ERROR_INVALID_PARAMETER;
    }
    const auto* free = std::find_if(values_ + 1, values_ + MaxValues,
                                    [](const Value& candidate) { return !candidate.InUse; });
    if (free == values_ + MaxValues) {
        return ERROR_NO_SYSTEM_RESOURCES;
    }
    *value = static_cast<uint32_t>(free - values_);
    values_[*value].Name.Assign(name);
    values_[*value].Next = NoLink;
    values_[*value].InUse = 1;
    return ERROR_SUCCESS;
}

LONG RegistryStore::SetValue(KeyReference key, std::u16string_view name, DWORD type, const void* data,
                             DWORD size) {
    const std::lock_guard hold(lock_);
    if (!IsValid(key)) {
        return ERROR_KEY_DELETED;
    }
    if (size > MaxDataSize) {
        return ERROR_NO_SYSTEM_RESOURCES;
    }
    uint32_t* link = FindValueLink(key.Index, name);
    uint32_t value = *link;
    if (value == NoLink) {
        const LONG error = MakeValue(name, &value);
        if (error != ERROR_SUCCESS) {
            return error;
        }
    }
    values_[value].Type = type;
    values_[value].Size = size;
    if (size > 0) {
        std::memcpy(values_[value].Data, data, size);
    }
    *link = value;
    return ERROR_SUCCESS;
}

LONG RegistryStore::QueryValue(KeyReference key, std::u16string_view name, const ValueQuery& query) {
    const std::lock_guard hold(lock_);
    if (!IsValid(key)) {
        return ERROR_KEY_DELETED;
    }
    const uint32_t index = *FindValueLink(key.Index, name);
    if (index == NoLink) {
        return ERROR_FILE_NOT_FOUND;
    }
    const Value& value = values_[index];
    if (query.Type) {
        *query.Type = value.Type;
    }
    if (!query.Size) {
        return ERROR_SUCCESS;
    }
    const bool fits = *query.Size >= value.Size;
    *query.Size = value.Size;
    if (!query.Data) {
        return ERROR_SUCCESS;
    }
    if (!fits) {
        return ERROR_MORE_DATA;
    }
    std::memcpy(query.Data, value.Data, value.Size);
    return ERROR_SUCCESS;
}

LONG RegistryStore::DeleteValue(KeyReference key, std::u16string_view name) {
    const std::lock_guard hold(lock_);
    if (!IsValid(key)) {
        return ERROR_KEY_DELETED;
    }
    uint32_t* link = FindValueLink(key.Index, name);
    if (*link == NoLink) {
        return ERROR_FILE_NOT_FOUND;
    }
    Value& value = values_[*link];
    *link = value.Next;
    value.InUse = 0;
    return ERROR_SUCCESS;
}

}  // namespace platform
