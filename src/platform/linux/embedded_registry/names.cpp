#include "embedded_registry/names.h"

#include "embedded_registry/case_folding.h"
#include "platform/unicode.h"

namespace korva::platform::embedded {

std::optional<std::string> foldedName(std::string_view name, std::size_t longest) {
    std::string folded;
    folded.reserve(name.size());
    std::size_t units = 0;
    while (!name.empty()) {
        const char32_t character = takeCharacter(name).value_or(U'\0');
        units += character < 0x10000 ? 1 : 2;
        if (character == 0 || units > longest) {
            return std::nullopt;
        }
        appendCharacter(folded, foldCase(character));
    }
    return folded;
}

std::optional<Path> splitPath(std::string_view path) {
    Path parts;
    while (!path.empty()) {
        const std::string_view written = path.substr(0, path.find('\\'));
        auto folded = foldedName(written, longestKeyName);
        if (!folded || folded->empty() || parts.size() == deepestKey) {
            return std::nullopt;
        }
        parts.push_back({std::string(written), std::move(*folded)});
        path.remove_prefix(written.size());
        if (!path.empty()) {
            path.remove_prefix(1);
        }
    }
    return parts;
}

}  // namespace korva::platform::embedded
