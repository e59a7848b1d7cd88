#include "korva/doctor/link_remedy.h"

#include <fmt/core.h>

#include "korva/doctor/command_word.h"

namespace korva::tool {

std::string linkCause(const std::string& path) {
    return fmt::format("The key 'HKLM\\{}' points at another one, which objects don't follow.", path);
}

std::string linkRemedy(const std::string& path) {
    const std::string key = commandWord("HKLM\\" + path);
    return fmt::format("korva registry delete {} && korva registry create {}", key, key);
}

std::string makeKeyRemedy(const std::string& path) {
    return "korva registry create " + commandWord("HKLM\\" + path);
}

}  // namespace korva::tool
