#include "korva/preset/preset_file.h"

#include <unistd.h>

#include <array>
#include <cerrno>

#include "korva/errors.h"
#include "korva/input_file.h"
#include "korva/interruption.h"

namespace korva::tool {
namespace {

/// The largest engine's parameters with the most bytes each, as digits, are less.
constexpr std::size_t maxBytes = std::size_t{64} << 20;

bool isStandardInput(const std::string& path) {
    return path == "-";
}

std::string readRest(int source, const std::string& name) {
    std::string text;
    std::array<char, 1 << 16> block;
    while (text.size() <= maxBytes) {
        waitUntilReady(source, Direction::read);
        const ssize_t count = read(source, block.data(), block.size());
        if (count == 0) {
            return text;
        }
        if (count > 0) {
            text.append(block.data(), static_cast<std::size_t>(count));
        } else if (errno != EINTR && errno != EAGAIN) {
            fail("cannot read {}: {}", name, systemMessage(errno));
        }
    }
    fail("cannot read {}: it is larger than a preset can be, {} MiB", name, maxBytes >> 20);
}

}  // namespace

std::string readPresetFile(const std::string& path) {
    if (isStandardInput(path)) {
        return readRest(STDIN_FILENO, presetFileName(path));
    }
    const InputFile file(path);
    return readRest(file.descriptor(), "'" + path + "'");
}

std::string presetFileName(const std::string& path) {
    return isStandardInput(path) ? "standard input" : path;
}

}  // namespace korva::tool
