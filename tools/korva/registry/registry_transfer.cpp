// Import and export of .reg text.
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstddef>
#include <optional>
#include <span>
#include <string_view>

#include "korva/errors.h"
#include "korva/input_file.h"
#include "korva/interruption.h"
#include "korva/registry/key_access.h"
#include "korva/registry/reg_text.h"
#include "korva/registry/registry_commands.h"
#include "korva/registry/registry_errors.h"
#include "korva/standard_streams.h"

namespace korva::tool {
namespace {

using platform::RegistryChange;
using platform::RegistryResult;
namespace result = platform::registry_result;

constexpr std::string_view standardInput = "-";

/// The rest of what `source` has. Stops early when that is too much for any .reg text.
std::vector<std::byte> readRest(int source, const std::string& name) {
    std::vector<std::byte> bytes;
    std::array<std::byte, 1 << 16> block;
    while (bytes.size() <= maxRegTextBytes) {
        waitUntilReady(source, Direction::read);
        const ssize_t count = read(source, block.data(), block.size());
        if (count == 0) {
            break;
        }
        if (count > 0) {
            bytes.insert(bytes.end(), block.begin(), block.begin() + count);
        } else if (errno != EINTR && errno != EAGAIN) {
            fail("cannot read '{}': {}", name, systemMessage(errno));
        }
    }
    return bytes;
}

std::vector<std::byte> readWhole(const std::string& path) {
    if (path == standardInput) {
        return readRest(STDIN_FILENO, "standard input");
    }
    const InputFile file(path);
    return readRest(file.descriptor(), path);
}

RegText textOf(const std::string& name, std::span<const std::byte> bytes) {
    try {
        return readRegText(bytes);
    } catch (const RegTextError& error) {
        fail("{}:{}: {}", name, error.line, error.what());
    }
}

/// Whether a change is refused for what it asks, and not for the state that the registry is in.
bool isFaultOfText(RegistryResult code) {
    return code == result::invalidParameter || code == result::isLink || code == result::invalidData;
}

void applyText(const std::string& name, const RegText& text) {
    std::size_t failed = text.changes.size();
    const RegistryResult code = platform::applyRegistryChanges(text.changes, &failed);
    if (code != result::success && isFaultOfText(code) && failed < text.lines.size()) {
        fail("{}:{}: {}", name, text.lines[failed], registryMessage(code));
    }
    throwIfRefused(code, fmt::format("import '{}'", name));
}

void addKey(std::vector<RegistryChange>& changes, const KeyPlace& place, const KeyContents& contents) {
    throwIfInterrupted();
    changes.push_back({RegistryChange::Kind::createKey, place.root, place.path, {}, {}});
    for (const auto& [name, value] : contents.values) {
        changes.push_back({RegistryChange::Kind::setValue, place.root, place.path, name, value});
    }
}

[[noreturn]] void failOnLink(const KeyPlace& place) {
    fail("cannot export the key '{}': {}", keyText(place), registryMessage(result::isLink));
}

}  // namespace

void runRegistryImport(const RegistryOptions& options) {
    const std::string name = options.file == standardInput ? "standard input" : options.file;
    applyText(name, textOf(name, readWhole(options.file)));
}

void runRegistryExport(const RegistryOptions& options) {
    const KeyPlace place = keyOfArgument(options.key);
    std::vector<RegistryChange> changes;
    visitTree(
        openKey(place, platform::RegistryAccess::read), place,
        [&](const KeyPlace& key, const KeyContents& contents) { addKey(changes, key, contents); },
        failOnLink);
    const std::vector<std::byte> text = writeRegText(changes);
    printOutput({reinterpret_cast<const char*>(text.data()), text.size()});
}

}  // namespace korva::tool
