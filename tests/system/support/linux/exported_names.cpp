#include "tests/system/support/exported_names.h"

#include <elf.h>

#include <algorithm>
#include <cstring>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace korva::test {
namespace {

/// The file's bytes, read as records.
class Image {
public:
    explicit Image(const std::filesystem::path& library) {
        std::ifstream file(library, std::ios::binary);
        bytes.assign(std::istreambuf_iterator<char>(file), {});
    }

    template <class Record>
    [[nodiscard]] Record at(std::size_t offset) const {
        Record record;
        if (offset > bytes.size() || bytes.size() - offset < sizeof(record)) {
            throw std::runtime_error("a library that ends too soon");
        }
        std::memcpy(&record, bytes.data() + offset, sizeof(record));
        return record;
    }
    [[nodiscard]] std::string textAt(std::size_t offset) const {
        const auto end = std::find(bytes.begin() + static_cast<std::ptrdiff_t>(offset), bytes.end(), '\0');
        return {bytes.begin() + static_cast<std::ptrdiff_t>(offset), end};
    }

private:
    std::vector<char> bytes;
};

Elf64_Shdr section(const Image& image, const Elf64_Ehdr& header, std::size_t index) {
    return image.at<Elf64_Shdr>(header.e_shoff + index * header.e_shentsize);
}

bool isGiven(const Elf64_Sym& symbol) {
    const auto binding = ELF64_ST_BIND(symbol.st_info);
    return symbol.st_shndx != SHN_UNDEF && (binding == STB_GLOBAL || binding == STB_WEAK);
}

}  // namespace

std::vector<std::string> exportedNames(const std::filesystem::path& library) {
    const Image image(library);
    const auto header = image.at<Elf64_Ehdr>(0);
    if (std::memcmp(header.e_ident, ELFMAG, SELFMAG) != 0) {
        throw std::runtime_error("no library");
    }
    std::vector<std::string> names;
    for (std::size_t index = 0; index < header.e_shnum; ++index) {
        const Elf64_Shdr symbols = section(image, header, index);
        if (symbols.sh_type != SHT_DYNSYM) {
            continue;
        }
        const Elf64_Shdr texts = section(image, header, symbols.sh_link);
        for (std::size_t at = 0; at < symbols.sh_size; at += sizeof(Elf64_Sym)) {
            const auto symbol = image.at<Elf64_Sym>(symbols.sh_offset + at);
            if (isGiven(symbol)) {
                names.push_back(image.textAt(texts.sh_offset + symbol.st_name));
            }
        }
    }
    std::ranges::sort(names);
    return names;
}

}  // namespace korva::test
