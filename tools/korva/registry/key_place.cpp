#include "korva/registry/key_place.h"

#include <algorithm>
#include <array>

namespace korva::tool {
namespace {

using platform::RegistryRoot;

struct RootName {
    RegistryRoot root;
    std::string_view longName;
    std::string_view shortName;
};
constexpr std::array rootNames = {RootName{RegistryRoot::classesRoot, "HKEY_CLASSES_ROOT", "HKCR"},
                                  RootName{RegistryRoot::currentUser, "HKEY_CURRENT_USER", "HKCU"},
                                  RootName{RegistryRoot::localMachine, "HKEY_LOCAL_MACHINE", "HKLM"}};

char upper(char c) {
    return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}

bool sameWithoutCase(std::string_view a, std::string_view b) {
    return std::ranges::equal(a, b, {}, upper, upper);
}

const RootName* findRoot(std::string_view name) {
    const auto* const found = std::ranges::find_if(rootNames, [&](const RootName& root) {
        return sameWithoutCase(name, root.longName) || sameWithoutCase(name, root.shortName);
    });
    return found == rootNames.end() ? nullptr : found;
}

}  // namespace

ParsedKey parseKey(std::string_view text) {
    const std::size_t rootEnd = std::min(text.find('\\'), text.size());
    const RootName* const root = findRoot(text.substr(0, rootEnd));
    if (root == nullptr) {
        return {std::nullopt, "expected a key that begins with HKLM, HKCU or HKCR and a backslash"};
    }
    std::string_view path = text.substr(std::min(rootEnd + 1, text.size()));
    if (path.ends_with('\\')) {
        path.remove_suffix(1);
    }
    if (path.starts_with('\\') || path.ends_with('\\') || path.find("\\\\") != std::string_view::npos) {
        return {std::nullopt, "expected a name between the key's backslashes"};
    }
    return {KeyPlace{root->root, std::string(path)}, ""};
}

std::string keyText(RegistryRoot root, std::string_view path) {
    const auto* const name = std::ranges::find(rootNames, root, &RootName::root);
    std::string text(name->longName);
    if (!path.empty()) {
        text += '\\';
        text += path;
    }
    return text;
}

}  // namespace korva::tool
