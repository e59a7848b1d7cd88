#include "tests/support/own_registry.h"

#include <windows.h>

#include <atomic>
#include <stdexcept>

namespace korva::test {
namespace {

constexpr const char* folder = "Software\\KorvaTest\\";

std::string newName() {
    static std::atomic<unsigned> count{0};
    return std::to_string(GetCurrentProcessId()) + "-" + std::to_string(count.fetch_add(1));
}

/// What a process of the same number left behind, if it was killed, goes as well.
void removeTree(const std::string& path) {
    RegDeleteTreeA(HKEY_LOCAL_MACHINE, path.c_str());
}

}  // namespace

struct OwnRegistry::State {
    std::string path;
};

OwnRegistry::OwnRegistry() : state(std::make_unique<State>(State{folder + newName()})) {
    const std::string& path = state->path;
    removeTree(path);
    HKEY key = nullptr;
    const LSTATUS failed =
        RegCreateKeyExA(HKEY_LOCAL_MACHINE, path.c_str(), 0, nullptr, 0, KEY_READ, nullptr, &key, nullptr);
    if (failed != ERROR_SUCCESS) {
        throw std::runtime_error("can't make " + path + ": error " + std::to_string(failed));
    }
    RegCloseKey(key);
}

OwnRegistry::~OwnRegistry() {
    removeTree(state->path);
}

std::string OwnRegistry::key() const {
    return state->path;
}

}  // namespace korva::test
