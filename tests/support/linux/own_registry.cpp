#include "tests/support/own_registry.h"

#include <cstdlib>
#include <filesystem>
#include <optional>
#include <stdexcept>

#include "platform/registry.h"

namespace korva::test {
namespace {

constexpr const char* variable = "KORVA_REGISTRY";
constexpr const char* ownKey = "Software\\Own Test";

std::string newFolder() {
    std::string path = (std::filesystem::temp_directory_path() / "korva_registry_XXXXXX").string();
    if (mkdtemp(path.data()) == nullptr) {
        throw std::runtime_error("no folder for a registry");
    }
    return path;
}

}  // namespace

struct OwnRegistry::State {
    State() : folder(newFolder()) {
        if (const char* const value = std::getenv(variable); value != nullptr) {
            before = value;
        }
        setenv(variable, (folder + "/registry").c_str(), 1);
    }
    ~State() {
        if (before) {
            setenv(variable, before->c_str(), 1);
        } else {
            unsetenv(variable);
        }
        std::error_code ignored;
        std::filesystem::remove_all(folder, ignored);
    }
    State(const State&) = delete;
    State& operator=(const State&) = delete;

    std::string folder;
    std::optional<std::string> before;
};

OwnRegistry::OwnRegistry() : state(std::make_unique<State>()) {
    using namespace platform;
    RegistryKey made;
    const RegistryResult result =
        RegistryKey::root(RegistryRoot::localMachine).create(ownKey, RegistryAccess::read, made);
    if (result != registry_result::success) {
        throw std::runtime_error("no key for a test: " + std::to_string(result));
    }
}

OwnRegistry::~OwnRegistry() = default;

std::string OwnRegistry::key() const {
    return ownKey;
}

}  // namespace korva::test
