#include "tests/support/file_bytes.h"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace korva::test {
namespace {

std::filesystem::path pathOf(const std::string& text) {
    return {std::u8string(text.begin(), text.end())};
}

}  // namespace

std::string readBytes(const std::string& path) {
    std::ifstream file(pathOf(path), std::ios::binary);
    if (!file) {
        throw std::runtime_error(path + ": can't be read");
    }
    return {std::istreambuf_iterator<char>(file), {}};
}

void writeBytes(const std::string& path, const std::string& bytes) {
    std::ofstream file(pathOf(path), std::ios::binary);
    file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    if (!file.flush()) {
        throw std::runtime_error(path + ": can't be written");
    }
}

}  // namespace korva::test
