// Names of files between text, which is UTF-8 on every system, and what the system takes.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace korva::tool {

[[nodiscard]] inline std::filesystem::path pathOfText(std::string_view text) {
    return {std::u8string(text.begin(), text.end())};
}

[[nodiscard]] inline std::string textOfPath(const std::filesystem::path& path) {
    const std::u8string text = path.u8string();
    return {text.begin(), text.end()};
}

}  // namespace korva::tool
