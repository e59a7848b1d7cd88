#include "korva/registry/key_access.h"

#include <cstdint>

#include "korva/errors.h"
#include "korva/registry/registry_errors.h"

namespace korva::tool {
namespace {

using platform::RegistryAccess;
using platform::RegistryKey;
using platform::RegistryResult;
using platform::RegistryValue;
namespace result = platform::registry_result;

/// More than any name of a value takes.
constexpr std::size_t nameCapacity = std::size_t{1} << 17;

bool isGone(RegistryResult code) {
    return code == result::notFound || code == result::keyDeleted;
}

std::string readingOf(const KeyPlace& place) {
    return fmt::format("read the key '{}'", keyText(place));
}

void readKeyNames(const RegistryKey& key, const KeyPlace& place, KeyContents& contents) {
    std::string name;
    for (std::uint32_t i = 0;; ++i) {
        const RegistryResult code = key.keyName(i, name);
        if (code == result::noMoreItems || isGone(code)) {
            return;
        }
        throwIfRefused(code, readingOf(place));
        contents.keys.push_back(name);
    }
}

void readValues(const RegistryKey& key, const KeyPlace& place, KeyContents& contents) {
    std::string name;
    for (std::uint32_t i = 0;; ++i) {
        const RegistryResult code = key.valueName(i, nameCapacity, name);
        if (code == result::noMoreItems || isGone(code)) {
            return;
        }
        throwIfRefused(code, readingOf(place));
        RegistryValue value;
        const RegistryResult read = key.readValue(name, value);
        if (!isGone(read)) {
            throwIfRefused(read, readingOf(place));
            contents.values.emplace_back(name, std::move(value));
        }
    }
}

KeyPlace below(const KeyPlace& place, const std::string& name) {
    return {place.root, place.isRoot() ? name : place.path + "\\" + name};
}

}  // namespace

KeyPlace keyOfArgument(const std::string& argument) {
    ParsedKey parsed = parseKey(argument);
    if (!parsed.place) {
        fail("'{}' is no key: {}", argument, parsed.expected);
    }
    return std::move(*parsed.place);
}

std::string nameOfArgument(const std::string& argument) {
    return argument == "@" ? "" : argument;
}

std::string shownName(const std::string& name) {
    return name.empty() ? "@" : asOneLine(name);
}

RegistryKey openRoot(const KeyPlace& place) {
    RegistryResult code = result::success;
    RegistryKey root = RegistryKey::root(place.root, &code);
    throwIfRefused(code, "open the registry");
    return root;
}

RegistryKey openKey(const KeyPlace& place, RegistryAccess access) {
    RegistryKey key;
    const RegistryResult code = openRoot(place).open(place.path, access, key);
    if (code == result::notFound) {
        fail("there is no key '{}' in the registry '{}'", keyText(place), platform::registryPlace());
    }
    throwIfRefused(code, fmt::format("open the key '{}'", keyText(place)));
    return key;
}

KeyContents readContents(const RegistryKey& key, const KeyPlace& place) {
    KeyContents contents;
    readKeyNames(key, place, contents);
    readValues(key, place, contents);
    return contents;
}

void visitTree(const RegistryKey& key, const KeyPlace& place, const VisitKey& visit, const SkipKey& skipped) {
    const KeyContents contents = readContents(key, place);
    visit(place, contents);
    for (const std::string& name : contents.keys) {
        const KeyPlace child = below(place, name);
        RegistryKey opened;
        const RegistryResult code = key.open(name, RegistryAccess::read, opened);
        if (code == result::isLink) {
            skipped(child);
        } else if (!isGone(code)) {
            throwIfRefused(code, readingOf(child));
            visitTree(opened, child, visit, skipped);
        }
    }
}

}  // namespace korva::tool
