#include "korva/process/played_module.h"

#include <system_error>
#include <utility>

#include "korva/errors.h"
#include "platform/module_library.h"

namespace korva::tool {

PlayedModule::PlayedModule(std::string endpointId, params::EffectKind kind, std::filesystem::path searched,
                           std::filesystem::path shown)
    : endpoint(std::move(endpointId)),
      effect(kind),
      folder(std::move(searched)),
      shownFolder(std::move(shown)) {}

EngineUse PlayedModule::use() const {
    return engineUse(readEngineChoice(endpoint, effect), folder);
}

void PlayedModule::checkLoaded(const EngineUse& now) const {
    if (now.module.empty() || now.isLoaded) {
        return;
    }
    std::error_code error;
    if (!std::filesystem::exists(now.file, error)) {
        fail("there is no module '{}'; --module-dir says where modules lie",
             platform::libraryPath(shownFolder, now.module).string());
    }
    failAsUseless(now);
}

void PlayedModule::checkInstance() const {
    const EngineUse now = use();
    checkLoaded(now);
    if (now.isLoaded && !makesInstance(now, endpoint)) {
        failAsUseless(now);
    }
}

void PlayedModule::failAsUseless(const EngineUse& now) const {
    const std::string file = platform::libraryPath(shownFolder, now.module).string();
    fail("the module '{}' can't be loaded or makes no instance; see 'korva module check {}'", file, file);
}

}  // namespace korva::tool
