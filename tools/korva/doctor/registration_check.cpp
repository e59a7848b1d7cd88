#include "korva/doctor/registration_check.h"

#include <fmt/core.h>

#include <algorithm>
#include <map>
#include <system_error>
#include <vector>

#include "apo/registration/server_registration.h"
#include "korva/doctor/stored_text.h"
#include "korva/file_path.h"
#include "korva/registry/key_place.h"
#include "korva/registry/registry_errors.h"

namespace korva::tool {
namespace {

using platform::RegistryAccess;
using platform::RegistryChange;
using platform::RegistryKey;
using platform::RegistryResult;
using platform::RegistryValue;
namespace result = platform::registry_result;

/// What is wrong with the values of one key.
struct KeyFaults {
    const RegistryChange* first = nullptr;
    std::vector<std::string> missing{};
    std::vector<std::string> different{};
};

/// The keys in their order.
class Comparison {
public:
    explicit Comparison(const std::filesystem::path& file) : library(file), libraryText(textOfPath(file)) {}

    void compare(const RegistryChange& expected, const std::optional<RegistryValue>& registered) {
        ++count;
        if (!registered) {
            ++missingCount;
            faultsOf(expected).missing.push_back(valueText(expected.name));
        } else if (registered->type != expected.value.type || registered->data != expected.value.data) {
            compareDifferent(expected, *registered);
        }
    }

    [[nodiscard]] bool isNothingThere() const { return missingCount == count; }

    std::vector<std::string> otherLibraries{};
    std::vector<KeyFaults> keys{};

private:
    static std::string valueText(const std::string& name) {
        return name.empty() ? "its default value" : "'" + name + "'";
    }

    KeyFaults& faultsOf(const RegistryChange& expected) {
        if (keys.empty() || keys.back().first->path != expected.path) {
            keys.push_back({&expected});
        }
        return keys.back();
    }

    /// A library may be called by several paths.
    [[nodiscard]] bool isSameFile(const std::string& text) const {
        std::error_code none;
        return std::filesystem::equivalent(pathOfText(text), library, none);
    }

    void compareDifferent(const RegistryChange& expected, const RegistryValue& registered) {
        const std::optional<std::string> text = storedText(registered);
        if (storedText(expected.value) != libraryText || !text) {
            faultsOf(expected).different.push_back(valueText(expected.name));
        } else if (!isSameFile(*text) && std::ranges::find(otherLibraries, *text) == otherLibraries.end()) {
            otherLibraries.push_back(*text);
        }
    }

    const std::filesystem::path& library;
    const std::string libraryText;
    std::size_t count = 0;
    std::size_t missingCount = 0;
};

std::string listText(const std::vector<std::string>& names) {
    std::string text;
    for (std::size_t i = 0; i < names.size(); ++i) {
        text += i == 0 ? "" : i + 1 == names.size() ? " and " : ", ";
        text += names[i];
    }
    return text;
}

std::string causeOf(const KeyFaults& key) {
    const std::string missing = key.missing.empty() ? "" : "It lacks " + listText(key.missing) + ".";
    const std::string different = key.different.empty() ? ""
                                                        : listText(key.different) +
                                                              (key.different.size() == 1 ? " is" : " are") +
                                                              " not what a registration writes.";
    std::string cause = missing + (missing.empty() || different.empty() ? "" : " ") + different;
    cause.front() = cause.front() == 'i' ? 'I' : cause.front();
    return cause;
}

std::string otherCause(const std::string& other) {
    std::error_code none;
    return std::filesystem::exists(pathOfText(other), none)
               ? "Another library was registered after this one, or this one was moved."
               : "There is no such file: the library was moved or deleted after it was registered.";
}

Finding fault(std::string what, std::string cause, const std::string& remedy) {
    return {Subject::registration, Severity::fault, std::move(what), std::move(cause), remedy};
}

/// A look at the root of classes would make it where it is missing.
bool hasClasses() {
    RegistryResult code = result::success;
    const RegistryKey machine = RegistryKey::root(platform::RegistryRoot::localMachine, &code);
    RegistryKey classes;
    code = code == result::success ? machine.open("Software\\Classes", RegistryAccess::read, classes) : code;
    if (code != result::notFound && code != result::isLink) {
        throwIfRefused(code, "look for the classes of libraries");
    }
    return code == result::success;
}

std::optional<RegistryValue> readNothing(const RegistryChange&) {
    return std::nullopt;
}

std::optional<RegistryValue> readRegistered(const RegistryChange& expected) {
    const std::string action = fmt::format("read the key '{}'", keyText(expected.root, expected.path));
    RegistryResult code = result::success;
    const RegistryKey root = RegistryKey::root(expected.root, &code);
    throwIfRefused(code, action);
    RegistryKey key;
    RegistryValue value;
    code = root.open(expected.path, RegistryAccess::read, key);
    code = code == result::success ? key.readValue(expected.name, value) : code;
    // Hosts don't follow a key that is a link either.
    if (code == result::notFound || code == result::keyDeleted || code == result::isLink) {
        return std::nullopt;
    }
    throwIfRefused(code, action);
    return value;
}

}  // namespace

Findings registrationFindings(std::span<const RegistryChange> expected, const RegisteredValue& registered,
                              const std::filesystem::path& library, const std::string& remedy) {
    Comparison comparison(library);
    for (const RegistryChange& value : expected) {
        comparison.compare(value, registered(value));
    }
    if (comparison.isNothingThere()) {
        return {fault(fmt::format("The library '{}' is not registered.", textOfPath(library)),
                      "The registry has none of its classes, so that no host finds them.", remedy)};
    }
    Findings findings;
    for (const std::string& other : comparison.otherLibraries) {
        findings.push_back(fault(fmt::format("Hosts load '{}' in place of this library.", other),
                                 otherCause(other), remedy));
    }
    for (const KeyFaults& key : comparison.keys) {
        findings.push_back(fault(
            fmt::format("The registration in '{}' is not whole.", keyText(key.first->root, key.first->path)),
            causeOf(key), remedy));
    }
    return findings;
}

Findings checkRegistration(const std::filesystem::path& library, const std::string& remedy) {
    const RegisteredValue registered = hasClasses() ? readRegistered : readNothing;
    return registrationFindings(apo::serverValues(library), registered, library, remedy);
}

}  // namespace korva::tool
