#include "engine/engine_config_document.h"

#include <nlohmann/json.hpp>

#include <utility>

#include "engine/engine_table.h"
#include "platform/property_key.h"

namespace korva::engine {

EngineConfigDocument::EngineConfigDocument(nlohmann::json value)
    : object(std::make_unique<const nlohmann::json>(std::move(value))) {}

EngineConfigDocument::~EngineConfigDocument() = default;

GUID EngineConfigDocument::engineId() const {
    return platform::GuidFromText(object->value("EngineId", std::string()));
}

std::uint32_t EngineConfigDocument::presetVersion() const {
    return object->value("PresetVersion", std::uint32_t{0});
}

std::string EngineConfigDocument::platformName() const {
    return object->value("PlatformName", std::string());
}

std::vector<std::string> EngineConfigDocument::platformModuleNames() const {
    return object->value("PlatformModuleNames", std::vector<std::string>());
}

framework::Ref<const EngineConfigDocument> buildEngineConfigDocument(std::uint32_t flags,
                                                                     const GUID& engineId,
                                                                     std::uint32_t presetVersion,
                                                                     std::string_view outEndpointId) {
    const bool isHardware = (flags & modeHardware) != 0;
    const EnginePlatform platform = isHardware ? EnginePlatform::hardware : EnginePlatform::floatingPoint;
    nlohmann::json object = {{"EngineId", platform::guidText(engineId)},
                             {"PresetVersion", presetVersion},
                             {"OutEndpointId", outEndpointId},
                             {"PlatformName", platformName(platform)}};
    // What doesn't hold is absent, never false.
    if (isHardware) {
        object["Hardware"] = true;
    }
    if (const std::string_view module = moduleName(engineId, platform); !module.empty()) {
        object["PlatformModuleNames"] = nlohmann::json::array({module});
    }
    if (isHardware && (flags & modeSimulation) != 0) {
        object["Simulation"] = true;
    }
    return framework::Ref<const EngineConfigDocument>::adopt(new EngineConfigDocument(std::move(object)));
}

std::string dumpEngineConfigDocument(const EngineConfigDocument& document) {
    return document.json().dump();
}

bool documentsDiffer(const EngineConfigDocument& current, const EngineConfigDocument& candidate) {
    return current.json() != candidate.json();
}

}  // namespace korva::engine
