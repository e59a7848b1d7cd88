#include "korva/module/check/documents.h"

#include <fmt/core.h>
#include <nlohmann/json.hpp>

#include "engine/engine_config_document.h"
#include "params/catalogue.h"
#include "platform/property_key.h"

namespace korva::tool {
namespace {

constexpr GUID unknownEngine = {0x7C1DA0F3, 0x52B4, 0x4E11, {0x8A, 0x90, 0x3B, 0x6E, 0x5D, 0x21, 0xC4, 0x0F}};

/// With characters of one byte and of more, as friendly names have them.
constexpr const char* endpoint =
    "{0.0.0.00000000}.{b3f8fa53-0004-438e-9003-51a46e139bfc} \xC3\xA4\xE2\x82\xAC";

struct Pass {
    const char* name;
    std::uint32_t flags;
    std::uint32_t presetVersion;
    const char* endpoint;
};

constexpr Pass passes[] = {
    {"float platform", 0, 1, endpoint},
    {"float platform without an endpoint", 0, 0, ""},
    {"hardware platform", engine::modeHardware, 0xFFFFFFFF, endpoint},
    {"simulated hardware", engine::modeHardware | engine::modeSimulation, 1, endpoint},
};

Document documentOf(const Pass& pass, const GUID& engineId) {
    const auto built =
        engine::buildEngineConfigDocument(pass.flags, engineId, pass.presetVersion, pass.endpoint);
    const std::vector<std::string> modules = built->platformModuleNames();
    return {.name = fmt::format("{} of engine {}", pass.name, platform::guidText(engineId)),
            .engine = engineId,
            .moduleName = modules.empty() ? std::string() : modules.front(),
            .text = engine::dumpEngineConfigDocument(*built)};
}

Document withUnknownMembers(Document document) {
    nlohmann::json json = nlohmann::json::parse(document.text);
    json["AFutureMember"] = {{"EngineId", 1}, {"List", {nullptr, -1.5, "\"\\"}}};
    json["Zone"] = std::string(3000, 'z');
    document.name += " with members of a later version";
    document.text = json.dump();
    return document;
}

}  // namespace

std::vector<Document> allDocuments() {
    std::vector<GUID> engines;
    for (const params::ParamLayout& layout : params::allLayouts()) {
        engines.push_back(layout.engineId);
    }
    engines.push_back(unknownEngine);
    std::vector<Document> documents;
    for (const Pass& pass : passes) {
        for (const GUID& engineId : engines) {
            documents.push_back(documentOf(pass, engineId));
        }
    }
    documents.push_back(withUnknownMembers(documents.front()));
    return documents;
}

}  // namespace korva::tool
