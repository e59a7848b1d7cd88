#include "korva/doctor/effect_check.h"

#include <fmt/core.h>

#include <algorithm>
#include <cstdint>
#include <numeric>
#include <optional>
#include <utility>

#include "engine/engine_table.h"
#include "korva/doctor/chunk_blob.h"
#include "korva/doctor/command_word.h"
#include "korva/doctor/stored_text.h"
#include "korva/preset/effect_class.h"
#include "params/catalogue.h"
#include "params/chunk_plan.h"
#include "platform/property_key.h"

namespace korva::tool {
namespace {

using engine::EnginePlatform;
using platform::RegistryValue;
namespace effect_property = params::effect_property;

/// The reader of settings takes these and clears the second.
constexpr std::uint32_t knownFlags = params::mode_flag::hardware | 2;

/// Goes through an effect's properties in the order in which they are used.
class Examination {
public:
    Examination(const EffectPlace& of, const PropertyReader& read, std::span<const PROPERTYKEY> all)
        : place(of), property(read), keys(all) {}

    EffectReport run() {
        const std::optional<RegistryValue> selection = property(params::selectionKey(place.kind));
        report.isSelected = selection.has_value();
        if (selection && readSelection(*selection)) {
            checkVersion();
            const std::uint32_t flags = readFlags();
            if (const std::optional<GUID> engine = readEngine()) {
                useEngine(*engine, flags);
            }
        }
        return std::move(report);
    }

private:
    void add(Severity severity, std::string what, std::string cause) {
        const std::string remedy = fmt::format("korva preset install PRESET.json --endpoint {} --effect {}",
                                               commandWord(place.endpointId), effectName(place.kind));
        report.findings.push_back({Subject::endpoints, severity, std::move(what), std::move(cause), remedy});
    }
    void addFault(std::string what, std::string cause) {
        add(Severity::fault, std::move(what), std::move(cause));
    }

    [[nodiscard]] std::optional<RegistryValue> own(DWORD pid) const { return property({fxId, pid}); }
    [[nodiscard]] std::string valueName(DWORD pid) const { return platform::KeyToText({fxId, pid}); }

    bool readSelection(const RegistryValue& selection) {
        const std::string name = platform::KeyToText(params::selectionKey(place.kind));
        const std::optional<std::string> text = storedText(selection);
        fxId = platform::GuidFromText(text.value_or(""));
        if (fxId != GUID{}) {
            return true;
        }
        addFault(fmt::format("The settings of {} can't be found.", effectWords(place)),
                 text ? fmt::format("The value '{}', which selects them, is no GUID: '{}'.", name,
                                    text->substr(0, longestShown))
                      : fmt::format("The value '{}', which selects them, is no text.", name));
        return false;
    }

    void checkVersion() {
        const std::optional<RegistryValue> stored = own(effect_property::presetVersion);
        const std::optional<std::uint32_t> version = stored ? storedNumber(*stored) : std::nullopt;
        if (version.value_or(0) != 0) {
            return;
        }
        const std::string name = valueName(effect_property::presetVersion);
        addFault(
            fmt::format("The preset of {} has no version, so no engine is made for it.", effectWords(place)),
            !stored    ? fmt::format("The value '{}' is missing.", name)
            : !version ? fmt::format("The value '{}' is no number of 32 bits.", name)
                       : fmt::format("The value '{}' is 0.", name));
    }

    std::uint32_t readFlags() {
        const std::optional<RegistryValue> stored = own(effect_property::modeFlags);
        const std::optional<std::uint32_t> flags = stored ? storedNumber(*stored) : 0;
        const std::string name = valueName(effect_property::modeFlags);
        if (!flags) {
            addFault(fmt::format("The mode of {} is not known, and is taken for 0.", effectWords(place)),
                     fmt::format("The value '{}' is no number of 32 bits.", name));
        } else if ((*flags & ~knownFlags) != 0) {
            add(Severity::remark,
                fmt::format("The mode of {} has bits that this version passes over.", effectWords(place)),
                fmt::format("The value '{}' is {:#x}.", name, *flags));
        }
        return flags.value_or(0);
    }

    std::optional<GUID> readEngine() {
        const std::optional<RegistryValue> stored = own(effect_property::engineId);
        const std::optional<std::string> text = stored ? storedText(*stored) : std::nullopt;
        const GUID engine = platform::GuidFromText(text.value_or(""));
        if (engine != GUID{}) {
            return engine;
        }
        const std::string name = valueName(effect_property::engineId);
        addFault(fmt::format("No engine is named for {}.", effectWords(place)),
                 !stored ? fmt::format("The value '{}' is missing.", name)
                 : !text
                     ? fmt::format("The value '{}' is no text.", name)
                     : fmt::format("The value '{}' is no GUID: '{}'.", name, text->substr(0, longestShown)));
        return std::nullopt;
    }

    void useEngine(const GUID& engine, std::uint32_t flags) {
        const params::ParamLayout* const layout = params::FindLayout(engine);
        if (layout == nullptr) {
            addFault(fmt::format("The engine of {} is not known.", effectWords(place)),
                     fmt::format("The value '{}' is {}; 'korva catalogue' lists those that are.",
                                 valueName(effect_property::engineId), platform::guidText(engine)));
            return;
        }
        addModules(engine, flags);
        if (const auto plan = params::planChunks(*layout)) {
            checkChunks(*plan);
        }
    }

    /// What the hardware can't do, or has no module for, is done in floating point.
    void addModules(const GUID& engine, std::uint32_t flags) {
        for (const EnginePlatform platform : {EnginePlatform::hardware, EnginePlatform::floatingPoint}) {
            const std::string_view name = engine::moduleName(engine, platform);
            const bool isTried =
                platform == EnginePlatform::floatingPoint || (flags & params::mode_flag::hardware) != 0;
            if (isTried && !name.empty()) {
                report.modules.emplace_back(name);
            }
        }
        if (report.modules.empty()) {
            add(Severity::remark, fmt::format("Sound passes {} unchanged.", effectWords(place)),
                fmt::format("No module has the engine {}.", platform::guidText(engine)));
        }
    }

    void checkChunks(const params::ChunkPlan& plan) {
        for (std::uint32_t chunk = 0; chunk < plan.chunkCount; ++chunk) {
            if (const auto stored = own(effect_property::firstChunk + chunk)) {
                checkChunk(plan, chunk, *stored);
            }
        }
        const DWORD end = effect_property::firstChunk + plan.chunkCount;
        const auto beyond = std::ranges::count_if(
            keys, [&](const PROPERTYKEY& key) { return key.fmtid == fxId && key.pid >= end; });
        if (beyond != 0) {
            addFault(
                fmt::format("The preset of {} has more chunks than its engine.", effectWords(place)),
                fmt::format(
                    "The engine has {}. Values that lie beyond, {} of them, are read by nobody: they are of a "
                    "preset for another engine.",
                    plan.chunkCount, beyond));
        }
    }

    void checkChunk(const params::ChunkPlan& plan, std::uint32_t chunk, const RegistryValue& stored) {
        const std::string fault = chunkFault(plan, chunk, stored);
        if (!fault.empty()) {
            addFault(
                fmt::format("Chunk {} of the preset of {} doesn't fit its engine.", chunk,
                            effectWords(place)),
                fmt::format("The value '{}' {}.", valueName(effect_property::firstChunk + chunk), fault));
        }
    }

    static constexpr std::size_t longestShown = 80;

    const EffectPlace& place;
    const PropertyReader& property;
    const std::span<const PROPERTYKEY> keys;
    GUID fxId{};
    EffectReport report;
};

}  // namespace

std::string effectWords(const EffectPlace& place) {
    return fmt::format("the {} effect of \"{}\"", effectName(place.kind),
                       place.endpointName.empty() ? place.endpointId : place.endpointName);
}

EffectReport examineEffect(const EffectPlace& place, const PropertyReader& property,
                           std::span<const PROPERTYKEY> keys) {
    return Examination(place, property, keys).run();
}

}  // namespace korva::tool
