#include "tests/system/support/exported_names.h"

#include <windows.h>

#include <algorithm>
#include <cstring>
#include <stdexcept>

namespace korva::test {
namespace {

/// A library whose file is in memory as it would be for running, and does not run.
class MappedLibrary {
public:
    explicit MappedLibrary(const std::filesystem::path& library)
        : module(LoadLibraryExW(library.c_str(), nullptr, DONT_RESOLVE_DLL_REFERENCES)) {
        if (module == nullptr) {
            throw std::runtime_error("no library");
        }
    }
    ~MappedLibrary() { FreeLibrary(module); }
    MappedLibrary(const MappedLibrary&) = delete;
    MappedLibrary& operator=(const MappedLibrary&) = delete;

    template <class Record>
    [[nodiscard]] const Record* at(DWORD offset) const {
        return reinterpret_cast<const Record*>(reinterpret_cast<const char*>(module) + offset);
    }

private:
    HMODULE const module;
};

}  // namespace

std::vector<std::string> exportedNames(const std::filesystem::path& library) {
    const MappedLibrary mapped(library);
    const auto* const dos = mapped.at<IMAGE_DOS_HEADER>(0);
    const auto* const headers = mapped.at<IMAGE_NT_HEADERS64>(static_cast<DWORD>(dos->e_lfanew));
    const IMAGE_DATA_DIRECTORY& place = headers->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_EXPORT];
    std::vector<std::string> names;
    if (place.Size != 0) {
        const auto* const exports = mapped.at<IMAGE_EXPORT_DIRECTORY>(place.VirtualAddress);
        const auto* const texts = mapped.at<DWORD>(exports->AddressOfNames);
        for (DWORD i = 0; i < exports->NumberOfNames; ++i) {
            names.emplace_back(mapped.at<char>(texts[i]));
        }
    }
    std::ranges::sort(names);
    return names;
}

}  // namespace korva::test
