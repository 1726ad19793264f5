#include "platform/loader/resources.h"

#include <cstring>
#include <memory>
#include <optional>
#include <string>

#include "platform/loader/module.h"
#include "platform/text/case.h"

namespace platform {

namespace {

constexpr DWORD SmallestHeader = 32;

// Reads a resource file's fields one after the other; every entry begins on a multiple of four.
class Reader {
public:
    Reader(const std::vector<BYTE>& file, size_t position) : file_(file), position_(position) {}

    template <typename T>
    std::optional<T> Take() {
        if (position_ + sizeof(T) > file_.size()) {
            return std::nullopt;
        }
        T value;
        std::memcpy(&value, &file_[position_], sizeof(T));
        position_ += sizeof(T);
        return value;
    }

    void Skip(size_t bytes) { position_ += bytes; }
    void Align() { position_ = (position_ + 3) & ~size_t{3}; }

private:
    const std::vector<BYTE>& file_;
    size_t position_;
};

// A type or name: a number after 0xFFFF, or a terminated text.
struct Identifier {
    WORD Number = 0;
    std::u16string Text;

    bool Matches(LPCWSTR wanted) const {
        if (IS_INTRESOURCE(wanted)) {
            return Text.empty() && Number == ResourceNumber(wanted);
        }
        return !Text.empty() && CompareIgnoringCase(Text, wanted) == 0;
    }
};

std::optional<Identifier> TakeIdentifier(Reader& reader) {
    Identifier identifier;
    std::optional<WORD> word = reader.Take<WORD>();
    if (word == WORD{0xFFFF}) {
        word = reader.Take<WORD>();
        identifier.Number = word.value_or(0);
    } else {
        for (; word.value_or(0) != 0; word = reader.Take<WORD>()) {
            identifier.Text += static_cast<char16_t>(*word);
        }
    }
    return word ? std::optional(identifier) : std::nullopt;
}

}  // namespace

bool FindResourceIn(const std::vector<BYTE>& file, LPCWSTR type, LPCWSTR name, Resource* resource) {
    for (size_t position = 0; position < file.size();) {
        Reader reader(file, position);
        const std::optional<DWORD> dataSize = reader.Take<DWORD>();
        const std::optional<DWORD> headerSize = reader.Take<DWORD>();
        const std::optional<Identifier> entryType = TakeIdentifier(reader);
        const std::optional<Identifier> entryName = TakeIdentifier(reader);
        reader.Align();
        reader.Skip(sizeof(DWORD) + sizeof(WORD));  // data version, memory flags
        const std::optional<WORD> language = reader.Take<WORD>();
        if (!language || !entryType || !entryName || *headerSize < SmallestHeader) {
            break;
        }

        const size_t data = position + *headerSize;
        if (data + *dataSize > file.size()) {
            break;
        }
        if (entryType->Matches(type) && entryName->Matches(name)) {
            *resource = {file.data() + data, *dataSize};
            return true;
        }
        position = (data + *dataSize + 3) & ~size_t{3};
    }
    return false;
}

bool FindModuleResource(HMODULE handle, LPCWSTR type, LPCWSTR name, Resource* resource) {
    const std::shared_ptr<const Module> module = FindModule(handle);
    if (!module) {
        SetLastError(ERROR_INVALID_HANDLE);
        return false;
    }
    if (!FindResourceIn(module->Resources, type, name, resource)) {
        SetLastError(ERROR_RESOURCE_NAME_NOT_FOUND);
        return false;
    }
    return true;
}

}  // namespace platform
