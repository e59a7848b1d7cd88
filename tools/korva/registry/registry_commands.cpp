#include "korva/registry/registry_commands.h"

#include <algorithm>
#include <string_view>

#include "korva/errors.h"
#include "korva/registry/key_access.h"
#include "korva/registry/registry_errors.h"
#include "korva/registry/value_json.h"
#include "korva/registry/value_text.h"
#include "korva/standard_streams.h"

namespace korva::tool {
namespace {

using platform::RegistryAccess;
using platform::RegistryChange;
using platform::RegistryKey;
using platform::RegistryResult;
using platform::RegistryValue;
namespace result = platform::registry_result;

/// `text` with all its control characters but line breaks spelt out.
std::string asLines(std::string_view text) {
    std::string lines;
    while (text.find('\n') != std::string_view::npos) {
        lines += asOneLine(text.substr(0, text.find('\n'))) + "\n";
        text.remove_prefix(text.find('\n') + 1);
    }
    return lines + asOneLine(text);
}

std::string listAsJson(const KeyPlace& place, const KeyContents& contents) {
    Json json = {{"key", keyText(place)}, {"keys", contents.keys}, {"values", Json::array()}};
    for (const auto& [name, value] : contents.values) {
        json["values"].push_back(valueJson(name, value));
    }
    return jsonLine(json);
}

/// How many columns a text takes, near enough to line up others behind it.
std::size_t widthOf(const std::string& text) {
    return static_cast<std::size_t>(
        std::ranges::count_if(text, [](char c) { return (static_cast<unsigned char>(c) & 0xC0) != 0x80; }));
}

std::string padded(std::string text, std::size_t width) {
    const std::size_t taken = widthOf(text);
    return text.append(width > taken ? width - taken : 0, ' ');
}

std::string listAsText(const KeyPlace& place, const KeyContents& contents) {
    constexpr std::size_t widestName = 40;  // longer ones stand out rather than push the rest aside
    std::string text = asOneLine(keyText(place)) + "\n";
    for (const std::string& name : contents.keys) {
        text += fmt::format("  {}\\\n", asOneLine(name));
    }
    std::size_t nameWidth = 1;
    for (const auto& [name, value] : contents.values) {
        nameWidth = std::max(nameWidth, std::min(widthOf(shownName(name)), widestName));
    }
    for (const auto& [name, value] : contents.values) {
        text += fmt::format("  {}  {:<8}  {}\n", padded(shownName(name), nameWidth), typeName(value.type),
                            dataSummary(value));
    }
    return text;
}

[[noreturn]] void failOnMissingValue(const std::string& name, const KeyPlace& place) {
    fail("there is no value '{}' in the key '{}'", shownName(name), keyText(place));
}

std::string actionOn(const char* verb, const std::string& name, const KeyPlace& place) {
    return fmt::format("{} the value '{}' of the key '{}'", verb, shownName(name), keyText(place));
}

RegistryValue readValue(const KeyPlace& place, const std::string& name) {
    RegistryValue value;
    const RegistryResult code = openKey(place, RegistryAccess::read).readValue(name, value);
    if (code == result::notFound) {
        failOnMissingValue(name, place);
    }
    throwIfRefused(code, actionOn("read", name, place));
    return value;
}

void deleteValue(const KeyPlace& place, const std::string& name) {
    const RegistryResult code = openKey(place, RegistryAccess::readWrite).deleteValue(name);
    if (code == result::notFound) {
        failOnMissingValue(name, place);
    }
    throwIfRefused(code, actionOn("delete", name, place));
}

void deleteTree(const KeyPlace& place) {
    if (place.isRoot()) {
        fail("'{}' is a root, which can't be deleted; name a key below it", keyText(place));
    }
    const RegistryResult code = openRoot(place).deleteTree(place.path);
    if (code == result::notFound) {
        fail("there is no key '{}' in the registry '{}'", keyText(place), platform::registryPlace());
    }
    throwIfRefused(code, fmt::format("delete the key '{}'", keyText(place)));
}

}  // namespace

void runRegistryList(const RegistryOptions& options) {
    const KeyPlace place = keyOfArgument(options.key);
    const KeyContents contents = readContents(openKey(place, RegistryAccess::read), place);
    printOutput(options.json ? listAsJson(place, contents) : listAsText(place, contents));
}

void runRegistryGet(const RegistryOptions& options) {
    const std::string name = nameOfArgument(options.name);
    const RegistryValue value = readValue(keyOfArgument(options.key), name);
    if (options.json) {
        return printOutput(jsonLine(valueJson(name, value)));
    }
    const std::string text = dataText(value);
    // A terminal would act on the control characters that a text may have.
    printOutput((isTerminal(stdout) ? asLines(text) : text) + "\n");
}

void runRegistrySet(const RegistryOptions& options) {
    const KeyPlace place = keyOfArgument(options.key);
    const std::string name = nameOfArgument(options.name);
    const RegistryValue value = valueOfWords(options.type, options.data);
    // The key and the value in one step: nobody finds the one without the other.
    const RegistryChange change{RegistryChange::Kind::setValue, place.root, place.path, name, value};
    throwIfRefused(platform::applyRegistryChanges({&change, 1}), actionOn("set", name, place));
}

void runRegistryCreate(const RegistryOptions& options) {
    const KeyPlace place = keyOfArgument(options.key);
    RegistryKey key;
    const RegistryResult code = openRoot(place).create(place.path, RegistryAccess::readWrite, key);
    throwIfRefused(code, fmt::format("make the key '{}'", keyText(place)));
}

void runRegistryDelete(const RegistryOptions& options) {
    const KeyPlace place = keyOfArgument(options.key);
    return options.hasName ? deleteValue(place, nameOfArgument(options.name)) : deleteTree(place);
}

}  // namespace korva::tool
