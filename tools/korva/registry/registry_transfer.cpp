// Import and export of .reg text.
#include <cstddef>
#include <span>
#include <string>

#include "korva/errors.h"
#include "korva/interruption.h"
#include "korva/registry/key_access.h"
#include "korva/registry/reg_text.h"
#include "korva/registry/registry_commands.h"
#include "korva/registry/registry_errors.h"
#include "korva/standard_streams.h"
#include "korva/whole_file.h"

namespace korva::tool {
namespace {

using platform::RegistryChange;
using platform::RegistryResult;
namespace result = platform::registry_result;

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
    const RegistryResult code = platform::applyRegistryChanges(text.changes, &failed, &isInterrupted);
    if (code == result::cancelled) {
        throwIfInterrupted();
    }
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
    const std::string name = inputName(options.file);
    const std::string bytes = readWholeFile(options.file, maxRegTextBytes);
    applyText(name, textOf(name, std::as_bytes(std::span(bytes))));
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
