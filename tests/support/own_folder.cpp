#include "tests/support/own_folder.h"

#include <random>
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

}  // namespace korva::test
