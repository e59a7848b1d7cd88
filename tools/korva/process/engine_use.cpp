#include "korva/process/engine_use.h"

#include "engine/endpoint_steps.h"
#include "engine/engine_config_document.h"
#include "engine/engine_table.h"
#include "korva/dsp_module.h"
#include "params/fx_property_store.h"
#include "params/property_set_path.h"
#include "platform/module_library.h"

namespace korva::tool {

using engine::EnginePlatform;
using framework::Held;
using params::FxPropertyStore;

namespace {

EngineUse useOn(EnginePlatform platform, const EngineChoice& choice, const std::filesystem::path& folder) {
    EngineUse use{.choice = choice, .module = std::string(engine::moduleName(choice.engineId, platform))};
    if (!use.module.empty()) {
        use.file = platform::libraryPath(folder, use.module);
        use.isLoaded = platform::isLibraryLoaded(use.file);
    }
    use.onHardware = use.isLoaded && platform == EnginePlatform::hardware;
    return use;
}

/// The text that a module is made an instance with.
std::string documentOf(const EngineUse& use, const std::string& endpointId) {
    const std::uint32_t flags = use.onHardware ? use.choice.modeFlags : 0;
    return engine::dumpEngineConfigDocument(
        *engine::buildEngineConfigDocument(flags, use.choice.engineId, use.choice.presetVersion, endpointId));
}

}  // namespace

EngineChoice readEngineChoice(const std::string& endpointId, params::EffectKind kind) {
    if (endpointId.empty()) {
        return {};
    }
    const auto set =
        Held<FxPropertyStore>::first(FxPropertyStore::Open(endpointId, params::property_set::user));
    const engine::PropertyStore store = set.ref();
    const GUID fxId = engine::guidAt(store, params::selectionKey(kind));
    return {engine::engineIdIn(store, fxId), engine::presetVersionIn(store, fxId),
            engine::modeFlagsIn(store, fxId)};
}

EngineUse engineUse(const EngineChoice& choice, const std::filesystem::path& folder) {
    if (!choice.isMade()) {
        return {};
    }
    if (choice.wantsHardware()) {
        if (EngineUse use = useOn(EnginePlatform::hardware, choice, folder); use.onHardware) {
            return use;
        }
    }
    return useOn(EnginePlatform::floatingPoint, choice, folder);
}

bool makesInstance(const EngineUse& use, const std::string& endpointId) {
    const platform::ModuleLibrary library = platform::ModuleLibrary::load(use.file);
    auto* const create = reinterpret_cast<decltype(&ZRDSPAPI_Create)>(library.find("ZRDSPAPI_Create"));
    auto* const free = reinterpret_cast<decltype(&ZRDSPAPI_Free)>(library.find("ZRDSPAPI_Free"));
    if (create == nullptr) {
        return false;
    }
    const std::string document = documentOf(use, endpointId);
    DspInstance* const instance = create(document.data(), static_cast<std::uint32_t>(document.size()));
    if (instance != nullptr && free != nullptr) {
        free(instance);
    }
    return instance != nullptr;
}

}  // namespace korva::tool
