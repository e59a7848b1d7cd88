#include "korva/doctor/command_word.h"

#include <algorithm>

namespace korva::tool {
namespace {

bool isPlain(char c) {
    const bool isLetter = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
    return isLetter || (c >= '0' && c <= '9') ||
           std::string_view("-_./:+=,@").find(c) != std::string_view::npos;
}

/// Between double quotes a shell takes a backslash for itself only before certain signs, of which a second
/// backslash and the closing quote may occur.
bool staysInDoubleQuotes(std::string_view text) {
    return text.find_first_of("\"$`!%") == text.npos && text.find("\\\\") == text.npos &&
           !text.ends_with('\\');
}

}  // namespace

std::string commandWord(std::string_view text) {
    if (!text.empty() && std::ranges::all_of(text, isPlain)) {
        return std::string(text);
    }
    if (staysInDoubleQuotes(text)) {
        return '"' + std::string(text) + '"';
    }
    std::string word = "'";
    for (const char c : text) {
        word += c == '\'' ? std::string("'\\''") : std::string(1, c);
    }
    return word + "'";
}

}  // namespace korva::tool
