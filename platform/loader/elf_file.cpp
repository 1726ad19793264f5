#include "platform/loader/elf_file.h"

#include <elf.h>

#include <cstring>
#include <fstream>

namespace platform {

namespace {

template <typename T>
bool ReadAt(std::ifstream& file, uint64_t offset, T* items, size_t count) {
    file.seekg(static_cast<std::streamoff>(offset));
    file.read(reinterpret_cast<char*>(items), static_cast<std::streamsize>(count * sizeof(T)));
    return file.good();
}

bool ReadHeader(std::ifstream& file, Elf64_Ehdr* header) {
    return ReadAt(file, 0, header, 1) && std::memcmp(header->e_ident, ELFMAG, SELFMAG) == 0 &&
           header->e_ident[EI_CLASS] == ELFCLASS64 && header->e_ident[EI_DATA] == ELFDATA2LSB &&
           header->e_shentsize == sizeof(Elf64_Shdr) && header->e_shstrndx < header->e_shnum;
}

bool ReadContents(std::ifstream& file, const Elf64_Shdr& section, std::vector<BYTE>* contents) {
    contents->resize(section.sh_size);
    return section.sh_size == 0 || section.sh_type == SHT_NOBITS ||
           ReadAt(file, section.sh_offset, contents->data(), contents->size());
}

}  // namespace

std::optional<ElfSection> ReadElfSection(const std::string& path, const std::string& name) {
    std::ifstream file(path, std::ios::binary);
    Elf64_Ehdr header;
    if (!file || !ReadHeader(file, &header)) {
        return std::nullopt;
    }

    std::vector<Elf64_Shdr> sections(header.e_shnum);
    std::vector<BYTE> names;
    if (!ReadAt(file, header.e_shoff, sections.data(), sections.size()) ||
        !ReadContents(file, sections[header.e_shstrndx], &names)) {
        return std::nullopt;
    }

    for (const Elf64_Shdr& section : sections) {
        // The terminator is compared too, so that a longer name does not match.
        if (section.sh_name + name.size() >= names.size() ||
            std::memcmp(&names[section.sh_name], name.c_str(), name.size() + 1) != 0) {
            continue;
        }
        ElfSection found = {section.sh_addr, section.sh_size, {}};
        if (!ReadContents(file, section, &found.Contents)) {
            return std::nullopt;
        }
        return found;
    }
    return std::nullopt;
}

}  // namespace platform
