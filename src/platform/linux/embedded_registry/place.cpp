#include "embedded_registry/place.h"

#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cstdlib>
#include <filesystem>

namespace korva::platform::embedded {
namespace {

std::string variable(const char* name) {
    const char* const value = std::getenv(name);
    return value == nullptr ? "" : value;
}

std::string homeFolder() {
    if (const std::string home = variable("HOME"); !home.empty()) {
        return home;
    }
    passwd entry{};
    passwd* found = nullptr;
    std::array<char, 4096> texts;
    getpwuid_r(getuid(), &entry, texts.data(), texts.size(), &found);
    return found == nullptr ? "" : found->pw_dir;
}

/// The user's folder for what programs keep, by the rules of the desktop: one that isn't absolute is ignored.
std::string stateFolder() {
    if (const std::string folder = variable("XDG_STATE_HOME"); folder.starts_with('/')) {
        return folder;
    }
    const std::string home = homeFolder();
    return home.empty() ? "" : home + "/.local/state";
}

}  // namespace

std::string registryPath() {
    if (const std::string given = variable("KORVA_REGISTRY"); !given.empty()) {
        std::error_code ignored;
        return std::filesystem::absolute(given, ignored).string();
    }
    const std::string folder = stateFolder();
    return folder.empty() ? "" : folder + "/korva/registry";
}

std::string withoutLinks(const std::string& path) {
    std::error_code error;
    const std::filesystem::path real = std::filesystem::canonical(path, error);
    return error ? path : real.string();
}

void makeFoldersFor(const std::string& path) noexcept {
    // By the rules of the desktop, what is made there is for its user only.
    const bool isPrivate = variable("KORVA_REGISTRY").empty();
    for (std::size_t end = path.find('/', 1); end != path.npos; end = path.find('/', end + 1)) {
        mkdir(path.substr(0, end).c_str(), isPrivate ? 0700 : 0777);
    }
}

}  // namespace korva::platform::embedded
