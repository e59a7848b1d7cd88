#include "tests/support/own_folder.h"

#include <fstream>
#include <iterator>
#include <random>
#include <stdexcept>
#include <system_error>

namespace korva::test {
namespace {

std::filesystem::path newFolder() {
    std::random_device random;
    std::filesystem::path path;
    do {
        path = std::filesystem::temp_directory_path() / ("korva-test-" + std::to_string(random()));
    } while (!std::filesystem::create_directory(path));
    return std::filesystem::canonical(path);
}

}  // namespace

OwnFolder::OwnFolder() : folder(newFolder()) {}

OwnFolder::~OwnFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(folder, ignored);
}

std::filesystem::path OwnFolder::putLibrary(const std::filesystem::path& library,
                                            const std::string& name) const {
    const std::filesystem::path copy = folder / (name + library.extension().string());
    std::filesystem::copy_file(library, copy);
    return copy;
}

std::filesystem::path OwnFolder::putLibraryWith(const std::filesystem::path& library, const std::string& name,
                                                const std::string& text, const std::string& other) const {
    std::ifstream file(library, std::ios::binary);
    std::string contents{std::istreambuf_iterator<char>(file), {}};
    std::size_t at = contents.find(text);
    if (at == std::string::npos) {
        throw std::runtime_error("no " + text + " in " + library.string());
    }
    for (; at != std::string::npos; at = contents.find(text, at + 1)) {
        contents.replace(at, text.size(), other);
    }
    const std::filesystem::path copy = folder / (name + library.extension().string());
    std::ofstream(copy, std::ios::binary) << contents;
    return copy;
}

}  // namespace korva::test
