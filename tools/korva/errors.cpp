#include "korva/errors.h"

#include <cstdio>
#include <system_error>

namespace korva::tool {

std::string systemMessage(int errorNumber) {
    return std::generic_category().message(errorNumber);
}

std::string asOneLine(std::string_view text) {
    std::string line;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte < 0x20 || byte == 0x7F) {
            line += fmt::format("\\x{:02X}", byte);
        } else {
            line += c;
        }
    }
    return line;
}

void printError(std::string_view text) {
    printNotice(fmt::format("error: {}", text));
}

void printNotice(std::string_view text) {
    const std::string line = "korva: " + asOneLine(text) + "\n";
    std::fwrite(line.data(), 1, line.size(), stderr);
}

}  // namespace korva::tool
