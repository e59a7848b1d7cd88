// Runs a fuzz target on every file of a folder, where there is no fuzzer: a corpus as a test.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

using Path = std::filesystem::path;

std::vector<Path> filesOf(const Path& folder) {
    std::vector<Path> files;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        files.push_back(entry.path());
    }
    if (files.empty()) {
        throw std::runtime_error("there is no file in " + folder.string());
    }
    std::ranges::sort(files);
    return files;
}

/// In a block of just their size, so that a sanitizer sees a read behind them.
std::vector<std::uint8_t> bytesOf(const Path& file) {
    if (!std::filesystem::is_regular_file(file)) {
        throw std::runtime_error(file.string() + " is no file");
    }
    std::ifstream stream(file, std::ios::binary);
    const std::string read{std::istreambuf_iterator<char>(stream), {}};
    if (!stream || read.size() != std::filesystem::file_size(file)) {
        throw std::runtime_error("can't read " + file.string());
    }
    return {read.begin(), read.end()};
}

/// A target that fails ends the process, so its file is named before.
std::size_t replay(const Path& folder) {
    const std::vector<Path> files = filesOf(folder);
    for (const Path& file : files) {
        const std::vector<std::uint8_t> bytes = bytesOf(file);
        std::printf("%s\n", file.filename().string().c_str());
        std::fflush(stdout);
        LLVMFuzzerTestOneInput(bytes.data(), bytes.size());
    }
    return files.size();
}

}  // namespace

int main(int argumentCount, char** arguments) {
    if (argumentCount != 2) {
        std::fprintf(stderr, "usage: %s FOLDER\n", arguments[0]);
        return 2;
    }
    try {
        std::printf("%zu files, none with a fault\n", replay(arguments[1]));
    } catch (const std::exception& error) {
        std::fprintf(stderr, "error: %s\n", error.what());
        return 1;
    }
    return 0;
}
