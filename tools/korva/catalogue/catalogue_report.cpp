#include "korva/catalogue/catalogue_report.h"

#include <fmt/core.h>

#include <algorithm>
#include <array>
#include <string_view>
#include <vector>

#include "engine/engine_table.h"
#include "korva/catalogue/engine_parameters.h"
#include "korva/json.h"
#include "korva/preset/field_words.h"
#include "platform/property_key.h"

namespace korva::tool {
namespace {

/// Zero bytes in a row that are counted instead of shown.
constexpr std::size_t longRun = 8;

constexpr std::array platforms = {engine::EnginePlatform::floatingPoint, engine::EnginePlatform::hardware};

struct ListedModule {
    std::int32_t index = 0;  ///< -1 for the base list.
    std::string id;          ///< Empty for the base list.
    std::uint32_t parameters = 0;
    std::uint32_t bytes = 0;
};

std::uint32_t bytesOf(const params::ParamDescriptorList& list) {
    std::uint32_t bytes = 0;
    for (std::uint32_t i = 0; i < list.Count(); ++i) {
        bytes += params::payloadSize(list.At(i));
    }
    return bytes;
}

std::vector<ListedModule> modulesOf(const params::ParamLayout& layout) {
    const params::ParamDescriptorList& base = params::BaseList();
    std::vector<ListedModule> modules = {{-1, "", base.Count(), bytesOf(base)}};
    for (std::uint32_t i = 0; i < layout.ModuleCount(); ++i) {
        const params::ParamModuleRecord& module = layout.Module(i);
        modules.push_back({static_cast<std::int32_t>(module.moduleIndex), platform::guidText(module.moduleId),
                           module.descriptors.Count(), bytesOf(module.descriptors)});
    }
    return modules;
}

std::string hexText(std::span<const std::byte> bytes) {
    std::string text;
    for (const std::byte byte : bytes) {
        text += fmt::format("{:02x}", std::to_integer<unsigned>(byte));
    }
    return text;
}

/// "0002 00*2048": long runs of zeros stand apart as their number.
std::string shortHexText(std::span<const std::byte> bytes) {
    std::string text;
    while (!bytes.empty()) {
        const auto zerosEnd = std::ranges::find_if(bytes, [](std::byte b) { return b != std::byte{0}; });
        const auto zeros = static_cast<std::size_t>(zerosEnd - bytes.begin());
        if (zeros >= longRun) {
            text += fmt::format("{}00*{}{}", text.empty() ? "" : " ", zeros, zeros < bytes.size() ? " " : "");
            bytes = bytes.subspan(zeros);
        } else {
            const std::size_t shown = std::min(zeros + 1, bytes.size());
            text += hexText(bytes.first(shown));
            bytes = bytes.subspan(shown);
        }
    }
    return text.empty() ? "-" : text;
}

/// "TANMER64 (Float), DRIVOL64 (iSST)"
std::string dspModulesText(const params::ParamLayout& layout) {
    std::string text;
    for (const engine::EnginePlatform platform : platforms) {
        if (const std::string_view name = engine::moduleName(layout.engineId, platform); !name.empty()) {
            text += fmt::format("{}{} ({})", text.empty() ? "" : ", ", name, engine::platformName(platform));
        }
    }
    return text.empty() ? "none" : text;
}

std::string headText(const params::ParamLayout& layout, const EngineListing& listing) {
    std::string text = fmt::format(
        "Engine {}\n  DSP module: {}\n  {} parameters, {} bytes in {} chunks of at most {} bytes\n\n",
        platform::guidText(layout.engineId), dspModulesText(layout), listing.parameters.size(), listing.bytes,
        listing.chunkCount, listing.chunkCapacity);
    text += "  module  id                                      parameters  bytes\n";
    for (const ListedModule& module : modulesOf(layout)) {
        text +=
            fmt::format("  {:>6}  {:<38}  {:>10}  {:>5}\n", module.index,
                        module.id.empty() ? "(every engine's)" : module.id, module.parameters, module.bytes);
    }
    return text;
}

std::string lineText(const ListedParameter& parameter) {
    const params::ParamDescriptor& descriptor = *parameter.descriptor;
    return fmt::format("  {:>6}  {:>3}  {:>5}  {:>8}  {:>6}  {:>4}  {:>5}  {:>8}  {:>6}  {:<24}  {}\n",
                       parameter.module, descriptor.paramId, parameter.size, descriptor.applyPriority,
                       descriptor.sourcePolicy, descriptor.category, parameter.chunk, parameter.position,
                       parameter.offset, fieldsText(descriptor),
                       shortHexText(params::defaultPayload(descriptor)));
}

Json modulesJson(const params::ParamLayout& layout) {
    Json modules = Json::array();
    for (const ListedModule& module : modulesOf(layout)) {
        modules.push_back({{"module", module.index},
                           {"id", module.id.empty() ? Json() : Json(module.id)},
                           {"parameterCount", module.parameters},
                           {"bytes", module.bytes}});
    }
    return modules;
}

Json dspModulesJson(const params::ParamLayout& layout) {
    Json modules = Json::object();
    for (const engine::EnginePlatform platform : platforms) {
        const std::string_view name = engine::moduleName(layout.engineId, platform);
        modules[std::string(engine::platformName(platform))] = name.empty() ? Json() : Json(name);
    }
    return modules;
}

Json headJson(const params::ParamLayout& layout, const EngineListing& listing) {
    return {{"engine", platform::guidText(layout.engineId)},
            {"parameterCount", listing.parameters.size()},
            {"bytes", listing.bytes},
            {"chunkCount", listing.chunkCount},
            {"chunkCapacity", listing.chunkCapacity},
            {"dspModules", dspModulesJson(layout)},
            {"modules", modulesJson(layout)}};
}

Json parameterJson(const ListedParameter& parameter) {
    const params::ParamDescriptor& descriptor = *parameter.descriptor;
    return {{"module", parameter.module},
            {"id", descriptor.paramId},
            {"size", parameter.size},
            {"priority", descriptor.applyPriority},
            {"policy", descriptor.sourcePolicy},
            {"category", descriptor.category},
            {"chunk", parameter.chunk},
            {"position", parameter.position},
            {"offset", parameter.offset},
            {"fields", fieldsText(descriptor)},
            {"default", hexText(params::defaultPayload(descriptor))}};
}

}  // namespace

std::string enginesText() {
    std::string text;
    for (const params::ParamLayout& layout : params::allLayouts()) {
        text += (text.empty() ? "" : "\n") + headText(layout, listEngine(layout));
    }
    return text;
}

std::string enginesJson() {
    Json engines = Json::array();
    for (const params::ParamLayout& layout : params::allLayouts()) {
        engines.push_back(headJson(layout, listEngine(layout)));
    }
    return Json{{"engines", std::move(engines)}}.dump() + "\n";
}

std::string engineText(const params::ParamLayout& layout) {
    const EngineListing listing = listEngine(layout);
    std::string text = headText(layout, listing);
    text +=
        "\n  module   id   size  priority  policy  cat.  chunk  position  offset  fields                    "
        "default\n";
    for (const ListedParameter& parameter : listing.parameters) {
        text += lineText(parameter);
    }
    return text;
}

std::string engineJson(const params::ParamLayout& layout) {
    const EngineListing listing = listEngine(layout);
    Json json = headJson(layout, listing);
    json["parameters"] = Json::array();
    for (const ListedParameter& parameter : listing.parameters) {
        json["parameters"].push_back(parameterJson(parameter));
    }
    return json.dump() + "\n";
}

}  // namespace korva::tool
