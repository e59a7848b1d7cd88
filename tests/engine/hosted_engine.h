// Engines of a test's own modules.
#pragma once

#include <nlohmann/json.hpp>

#include <filesystem>
#include <string>
#include <vector>

#include "engine/dsp_engine.h"
#include "engine/engine_config_document.h"
#include "framework/ref.h"

namespace korva::test {

/// The least document that names modules.
[[nodiscard]] inline framework::Ref<const engine::EngineConfigDocument> documentNaming(
    const std::vector<std::string>& modules) {
    return framework::Ref<const engine::EngineConfigDocument>::adopt(
        new engine::EngineConfigDocument(nlohmann::json{{"PlatformModuleNames", modules}}));
}

/// An engine of such a document, which the result holds open.
[[nodiscard]] inline framework::Held<engine::DspEngine> hostedEngine(const std::vector<std::string>& modules,
                                                                     const std::filesystem::path& folder) {
    return framework::Held<engine::DspEngine>::first(
        engine::createDspEngine(documentNaming(modules), folder));
}

}  // namespace korva::test
