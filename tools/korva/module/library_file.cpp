#include "korva/module/library_file.h"

#include <elf.h>
#include <fcntl.h>
#include <gelf.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <memory>
#include <string_view>
#include <utility>

#include "korva/errors.h"

namespace korva::tool {
namespace {

struct CloseFile {
    int descriptor = -1;
    ~CloseFile() { close(descriptor); }
};
struct EndElf {
    void operator()(Elf* elf) const noexcept { elf_end(elf); }
};
using ElfFile = std::unique_ptr<Elf, EndElf>;

int openToRead(const std::string& path) {
    const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (file < 0) {
        fail("cannot read '{}': {}", path, systemMessage(errno));
    }
    struct stat status = {};
    if (fstat(file, &status) != 0 || !S_ISREG(status.st_mode)) {
        close(file);
        fail("cannot read '{}': {}", path, S_ISDIR(status.st_mode) ? "it is a folder" : "it is no file");
    }
    return file;
}

/// What kind of thing a file is that is no library here.
std::string strangersFault(Elf* elf, std::string_view firstBytes) {
    if (firstBytes.empty()) {
        return "not a library: it is empty";
    }
    if (firstBytes.starts_with("MZ")) {
        return "a library or program for Windows";
    }
    return elf != nullptr && elf_kind(elf) == ELF_K_AR ? "an archive, not a library"
                                                       : "not a library, by its first bytes";
}

std::string machineText(const GElf_Ehdr& header) {
    constexpr std::pair<int, const char*> names[] = {{EM_386, "x86"},
                                                     {EM_X86_64, "x86-64"},
                                                     {EM_ARM, "ARM"},
                                                     {EM_AARCH64, "AArch64"},
                                                     {EM_RISCV, "RISC-V"},
                                                     {EM_PPC64, "Power"},
                                                     {EM_LOONGARCH, "LoongArch"}};
    const auto* const known = std::ranges::find(names, header.e_machine, &std::pair<int, const char*>::first);
    return fmt::format("{} of {} bit{}",
                       known == std::end(names) ? fmt::format("number {}", header.e_machine) : known->second,
                       header.e_ident[EI_CLASS] == ELFCLASS32 ? 32 : 64,
                       header.e_ident[EI_DATA] == ELFDATA2MSB ? ", its highest byte first" : "");
}

std::string headersFault(const GElf_Ehdr& header, const GElf_Ehdr& own) {
    if (header.e_machine != own.e_machine || header.e_ident[EI_CLASS] != own.e_ident[EI_CLASS] ||
        header.e_ident[EI_DATA] != own.e_ident[EI_DATA]) {
        return fmt::format("for another machine: {}; this one is {}", machineText(header), machineText(own));
    }
    return header.e_type == ET_DYN ? "" : "not a library, but a program or a part of one";
}

/// Bytes that a file must have for all that is loaded of it.
std::uint64_t loadedBytes(Elf* elf) {
    std::size_t count = 0;
    std::uint64_t bytes = 0;
    elf_getphdrnum(elf, &count);
    GElf_Phdr part = {};
    for (std::size_t i = 0; i < count && gelf_getphdr(elf, static_cast<int>(i), &part) != nullptr; ++i) {
        if (part.p_type == PT_LOAD && part.p_filesz <= UINT64_MAX - part.p_offset) {
            bytes = std::max<std::uint64_t>(bytes, part.p_offset + part.p_filesz);
        }
    }
    return bytes;
}

/// The loader doesn't look at a file's end, and the first use of what is behind it ends the process.
std::string lengthFault(Elf* elf, int descriptor) {
    struct stat status = {};
    const std::uint64_t needed = loadedBytes(elf);
    if (fstat(descriptor, &status) != 0 || static_cast<std::uint64_t>(status.st_size) >= needed) {
        return "";
    }
    return fmt::format("cut short: it has {} of at least {} bytes", status.st_size, needed);
}

GElf_Ehdr headerOfThisProgram() {
    GElf_Ehdr header = {};
    const CloseFile program{open("/proc/self/exe", O_RDONLY | O_CLOEXEC)};
    const ElfFile elf(elf_begin(program.descriptor, ELF_C_READ, nullptr));
    gelf_getehdr(elf.get(), &header);
    return header;
}

/// Calls `use` with each entry of a section that has entries, and with the section of their texts.
template <class Entry, class Get, class Use>
void forEachEntry(Elf_Scn* section, const GElf_Shdr& header, Get get, Use use) {
    Elf_Data* const data = elf_getdata(section, nullptr);
    if (data == nullptr || header.sh_entsize == 0) {
        return;
    }
    Entry entry;
    const std::size_t count = data->d_size / header.sh_entsize;
    for (std::size_t i = 0; i < count && get(data, static_cast<int>(i), &entry) != nullptr; ++i) {
        use(entry, header.sh_link);
    }
}

bool isExportedFunction(const GElf_Sym& symbol) {
    const int type = GELF_ST_TYPE(symbol.st_info);
    const int binding = GELF_ST_BIND(symbol.st_info);
    const int visibility = GELF_ST_VISIBILITY(symbol.st_other);
    return symbol.st_shndx != SHN_UNDEF && (type == STT_FUNC || type == STT_GNU_IFUNC) &&
           (binding == STB_GLOBAL || binding == STB_WEAK) &&
           (visibility == STV_DEFAULT || visibility == STV_PROTECTED);
}

void addText(std::vector<std::string>& texts, Elf* elf, std::size_t section, std::size_t offset) {
    if (const char* const text = elf_strptr(elf, section, offset)) {
        texts.emplace_back(text);
    }
}

void readEntry(LibraryFile& file, const GElf_Dyn& entry, Elf* elf, std::size_t texts) {
    if (entry.d_tag == DT_NEEDED) {
        addText(file.needs, elf, texts, entry.d_un.d_val);
    } else if (entry.d_tag == DT_FLAGS_1 && (entry.d_un.d_val & DF_1_PIE) != 0) {
        file.fault = "not a library, but a program";
    }
}

void readSections(LibraryFile& file, Elf* elf) {
    for (Elf_Scn* section = elf_nextscn(elf, nullptr); section != nullptr;
         section = elf_nextscn(elf, section)) {
        GElf_Shdr header = {};
        if (gelf_getshdr(section, &header) == nullptr) {
            continue;
        }
        if (header.sh_type == SHT_DYNSYM) {
            forEachEntry<GElf_Sym>(section, header, gelf_getsym,
                                   [&](const GElf_Sym& symbol, std::size_t texts) {
                                       if (isExportedFunction(symbol)) {
                                           addText(file.exports, elf, texts, symbol.st_name);
                                       }
                                   });
        } else if (header.sh_type == SHT_DYNAMIC) {
            forEachEntry<GElf_Dyn>(
                section, header, gelf_getdyn,
                [&](const GElf_Dyn& entry, std::size_t texts) { readEntry(file, entry, elf, texts); });
        }
    }
}

}  // namespace

LibraryFile readLibraryFile(const std::string& path) {
    const CloseFile opened{openToRead(path)};
    char firstBytes[2] = {};
    const ssize_t count = pread(opened.descriptor, firstBytes, sizeof(firstBytes), 0);
    if (count < 0) {
        fail("cannot read '{}': {}", path, systemMessage(errno));
    }
    elf_version(EV_CURRENT);
    const ElfFile elf(elf_begin(opened.descriptor, ELF_C_READ, nullptr));
    GElf_Ehdr header = {};
    if (elf == nullptr || elf_kind(elf.get()) != ELF_K_ELF || gelf_getehdr(elf.get(), &header) == nullptr) {
        return {.fault = strangersFault(elf.get(), {firstBytes, static_cast<std::size_t>(count)})};
    }
    LibraryFile file = {.fault = headersFault(header, headerOfThisProgram())};
    if (file.fault.empty()) {
        file.fault = lengthFault(elf.get(), opened.descriptor);
    }
    readSections(file, elf.get());
    return file;
}

}  // namespace korva::tool
