#include "korva/whole_file.h"

#include <array>
#include <memory>

#include "korva/errors.h"
#include "korva/interruption.h"
#include "platform/input_stream.h"

namespace korva::tool {
namespace {

using platform::InputStream;

bool isStandardInput(const std::string& path) {
    return path == "-";
}

std::unique_ptr<InputStream> openInput(const std::string& path) {
    if (isStandardInput(path)) {
        return std::make_unique<InputStream>();
    }
    std::error_code error;
    auto input = std::make_unique<InputStream>(path, error);
    if (error) {
        fail("cannot read '{}': {}", path, error.message());
    }
    return input;
}

/// As much as can be had at once; false at the end.
bool readMore(InputStream& input, const std::string& name, std::string& bytes) {
    std::array<char, 1 << 16> block;
    const platform::InputRead read = input.read(block);
    if (read.isInterrupted) {
        throwIfInterrupted();
    }
    if (read.error) {
        fail("cannot read '{}': {}", name, read.error.message());
    }
    bytes.append(block.data(), read.byteCount);
    return read.byteCount != 0;
}

}  // namespace

std::string readWholeFile(const std::string& path, std::size_t maxBytes) {
    const std::string name = inputName(path);
    const auto input = openInput(path);
    if (input->isFolder()) {
        fail("cannot read '{}': it is a folder", name);
    }
    std::string bytes;
    while (readMore(*input, name, bytes)) {
        if (bytes.size() > maxBytes) {
            fail("cannot read '{}': it is larger than {} MiB", name, maxBytes >> 20);
        }
    }
    if (bytes.empty()) {
        fail("cannot read '{}': it is empty", name);
    }
    return bytes;
}

std::string inputName(const std::string& path) {
    return isStandardInput(path) ? "standard input" : path;
}

}  // namespace korva::tool
