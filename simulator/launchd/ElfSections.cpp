#include "launchd/ElfSections.h"

#include <cstdint>
#include <cstring>

#include <elf.h>

namespace Simulator {

namespace {

std::optional<std::string_view> slice(std::string_view file, std::uint64_t offset, std::uint64_t size) {
    if (offset > file.size() || size > file.size() - offset) {
        return std::nullopt;
    }
    return file.substr(offset, size);
}

template <class Record>
std::optional<Record> recordAt(std::string_view file, std::uint64_t offset) {
    const auto bytes = slice(file, offset, sizeof(Record));
    if (!bytes) {
        return std::nullopt;
    }
    Record record;
    std::memcpy(&record, bytes->data(), sizeof record);
    return record;
}

std::optional<Elf64_Shdr> sectionHeader(std::string_view file, const Elf64_Ehdr& header,
                                        std::uint16_t index) {
    if (index >= header.e_shnum || header.e_shoff > file.size()) {
        return std::nullopt;
    }
    return recordAt<Elf64_Shdr>(file, header.e_shoff + std::uint64_t{index} * sizeof(Elf64_Shdr));
}

bool hasName(std::string_view names, std::uint32_t offset, std::string_view name) {
    return offset < names.size() && names.size() - offset > name.size() &&
           names.substr(offset).starts_with(name) && names[offset + name.size()] == '\0';
}

}  // namespace

std::optional<std::string_view> elfSection(std::string_view file, std::string_view name) {
    const auto header = recordAt<Elf64_Ehdr>(file, 0);
    if (!header || std::memcmp(header->e_ident, ELFMAG, SELFMAG) != 0 ||
        header->e_ident[EI_CLASS] != ELFCLASS64 || header->e_ident[EI_DATA] != ELFDATA2LSB ||
        header->e_shentsize != sizeof(Elf64_Shdr)) {
        return std::nullopt;
    }
    const auto namesHeader = sectionHeader(file, *header, header->e_shstrndx);
    const auto names = namesHeader ? slice(file, namesHeader->sh_offset, namesHeader->sh_size) : std::nullopt;
    for (std::uint16_t index = 0; names && index < header->e_shnum; ++index) {
        const auto section = sectionHeader(file, *header, index);
        if (!section) {
            return std::nullopt;
        }
        if (section->sh_type == SHT_NOBITS || !hasName(*names, section->sh_name, name)) {
            continue;
        }
        auto contents = slice(file, section->sh_offset, section->sh_size);
        while (contents && contents->ends_with('\0')) {
            contents->remove_suffix(1);
        }
        return contents;
    }
    return std::nullopt;
}

}  // namespace Simulator
