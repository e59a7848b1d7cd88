#include "korva/errors.h"

#include <cstdio>
#include <system_error>

#include "platform/standard_streams.h"

namespace korva::tool {
namespace {

bool isControl(char c) {
    const auto byte = static_cast<unsigned char>(c);
    return byte < 0x20 || byte == 0x7F;
}

/// Whether the first character is one of U+0080 to U+009F, some of which terminals take for an ESC and more.
bool isLongControl(std::string_view text) {
    return text.size() > 1 && text[0] == '\xC2' && static_cast<unsigned char>(text[1]) < 0xA0;
}

}  // namespace

std::string systemMessage(int errorNumber) {
    return std::generic_category().message(errorNumber);
}

std::string asOneLine(std::string_view text) {
    std::string line;
    while (!text.empty()) {
        const std::size_t length = isLongControl(text) ? 2 : 1;
        const char last = text[length - 1];
        if (length == 2 || isControl(last)) {
            line += fmt::format("\\x{:02X}", static_cast<unsigned char>(last));
        } else {
            line += last;
        }
        text.remove_prefix(length);
    }
    return line;
}

void printError(std::string_view text) {
    printNotice(fmt::format("error: {}", text));
}

void printNotice(std::string_view text) {
    // Nowhere is left to tell that it failed.
    static_cast<void>(platform::writeText(stderr, "korva: " + asOneLine(text) + "\n"));
}

}  // namespace korva::tool
