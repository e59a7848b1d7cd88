#include "korva/preset/preset_properties.h"

#include <fmt/core.h>

#include <algorithm>
#include <span>

#include "korva/preset/effect_class.h"
#include "params/chunk_plan.h"
#include "params/preset_blob.h"
#include "platform/property_key.h"
#include "platform/unicode.h"

namespace korva::tool {
namespace {

using platform::RegistryChange;
using platform::RegistryValue;

using Bytes = std::vector<std::byte>;

namespace effect_property = params::effect_property;
namespace registry_type = platform::registry_type;

/// The parameters of one chunk, in their order.
using Chunk = std::span<const params::PlannedParameter>;

ParameterPlace placeOf(const params::PlannedParameter& parameter) {
    return {static_cast<std::int32_t>(parameter.moduleIndex), parameter.descriptor->paramId};
}

params::ChunkPlan planOf(const GUID& engineId) {
    return *params::planChunks(*params::FindLayout(engineId));
}

Chunk chunkOf(const params::ChunkPlan& plan, std::uint32_t index) {
    const auto found = std::ranges::equal_range(plan.parameters, index, {}, &params::PlannedParameter::chunk);
    return {found.begin(), found.end()};
}

std::vector<std::uint32_t> sizesOf(Chunk chunk) {
    std::vector<std::uint32_t> sizes;
    std::ranges::transform(chunk, std::back_inserter(sizes), &params::PlannedParameter::size);
    return sizes;
}

Bytes blobOf(const Preset& preset, Chunk chunk) {
    std::vector<Bytes> slices;
    for (const params::PlannedParameter& parameter : chunk) {
        const auto set = preset.parameters.find(placeOf(parameter));
        slices.push_back(set == preset.parameters.end() ? params::defaultPayload(*parameter.descriptor)
                                                        : set->second);
    }
    return params::makePresetBlob(slices, sizesOf(chunk)).value();
}

/// Chunks of the engine that has most.
std::uint32_t mostChunks() {
    std::uint32_t most = 0;
    for (const params::ParamLayout& layout : params::allLayouts()) {
        most = std::max(most, params::planChunks(layout)->chunkCount);
    }
    return most;
}

RegistryValue textValue(const std::string& text) {
    Bytes bytes;
    for (const WCHAR unit : platform::toWide(text) + WCHAR{}) {
        bytes.push_back(static_cast<std::byte>(unit));
        bytes.push_back(static_cast<std::byte>(unit >> 8));
    }
    return {registry_type::string, std::move(bytes)};
}

RegistryValue numberValue(std::uint32_t number) {
    Bytes bytes;
    for (int i = 0; i < 4; ++i) {
        bytes.push_back(static_cast<std::byte>(number >> (8 * i)));
    }
    return {registry_type::dword, std::move(bytes)};
}

/// Adds steps for one key.
class Steps {
public:
    Steps(std::vector<RegistryChange>& added, std::string keyPath)
        : changes(added), path(std::move(keyPath)) {}

    void set(const PROPERTYKEY& key, RegistryValue value) {
        add(RegistryChange::Kind::setValue, key, std::move(value));
    }
    void remove(const PROPERTYKEY& key) { add(RegistryChange::Kind::deleteValue, key, {}); }

private:
    void add(RegistryChange::Kind kind, const PROPERTYKEY& key, RegistryValue value) {
        changes.push_back({.kind = kind,
                           .root = platform::RegistryRoot::localMachine,
                           .path = path,
                           .name = platform::KeyToText(key),
                           .value = std::move(value)});
    }

    std::vector<RegistryChange>& changes;
    std::string path;
};

std::optional<std::uint32_t> numberIn(const std::optional<RegistryValue>& value) {
    if (!value || value->type != registry_type::dword || value->data.size() != 4) {
        return std::nullopt;
    }
    std::uint32_t number = 0;
    for (std::size_t i = 0; i < 4; ++i) {
        number |= std::to_integer<std::uint32_t>(value->data[i]) << (8 * i);
    }
    return number;
}

/// Up to its terminator, if it has one.
std::optional<std::string> textIn(const std::optional<RegistryValue>& value) {
    if (!value || value->type != registry_type::string) {
        return std::nullopt;
    }
    platform::WideString text;
    for (std::size_t i = 0; i + 1 < value->data.size(); i += 2) {
        const auto unit = static_cast<WCHAR>(std::to_integer<unsigned>(value->data[i]) |
                                             std::to_integer<unsigned>(value->data[i + 1]) << 8);
        if (unit == WCHAR{}) {
            break;
        }
        text += unit;
    }
    return platform::toUtf8(text);
}

template <typename... Args>
[[noreturn]] void refuse(fmt::format_string<Args...> text, Args&&... args) {
    throw NoPreset(fmt::format(text, std::forward<Args>(args)...));
}

/// The GUID that a property holds as text.
GUID guidIn(const PropertyReader& property, const PROPERTYKEY& key, std::string_view what) {
    const std::optional<std::string> text = textIn(property(key));
    if (!text) {
        refuse("{} {} is missing or no text", what, platform::KeyToText(key));
    }
    const GUID guid = platform::GuidFromText(*text);
    if (guid == GUID{}) {
        refuse("{} {} is no GUID: '{}'", what, platform::KeyToText(key), *text);
    }
    return guid;
}

/// Adds what a blob sets otherwise than by default.
void addSlices(Preset& preset, Chunk chunk, std::span<const std::byte> blob) {
    std::vector<std::uint32_t> sizes = sizesOf(chunk);
    std::optional<std::span<const std::byte>> slices = params::takeOverrides(blob, sizes);
    for (std::size_t i = 0; slices && i < chunk.size(); ++i) {
        const std::optional<std::span<const std::byte>> slice = params::takeSlice(*slices, sizes[i]);
        if (!slice) {
            return;
        }
        if (!std::ranges::equal(*slice, params::defaultPayload(*chunk[i].descriptor))) {
            preset.parameters[placeOf(chunk[i])].assign(slice->begin(), slice->end());
        }
    }
}

void readChunks(Preset& preset, const GUID& fxId, const PropertyReader& property) {
    const params::ChunkPlan plan = planOf(preset.engineId);
    for (std::uint32_t index = 0; index < plan.chunkCount; ++index) {
        const auto value = property({fxId, effect_property::firstChunk + index});
        if (value && value->type == registry_type::binary) {
            addSlices(preset, chunkOf(plan, index), value->data);
        }
    }
}

}  // namespace

PresetExtent extentOf(const Preset& preset) {
    const params::ChunkPlan plan = planOf(preset.engineId);
    PresetExtent extent{.chunks = plan.chunkCount};
    for (std::uint32_t index = 0; index < plan.chunkCount; ++index) {
        extent.bytes += blobOf(preset, chunkOf(plan, index)).size();
    }
    return extent;
}

std::vector<RegistryChange> presetChanges(const Preset& preset, const std::string& setPath,
                                          params::EffectKind kind) {
    const GUID& fxId = effectClass(kind);
    const params::ChunkPlan plan = planOf(preset.engineId);
    std::vector<RegistryChange> changes;
    Steps steps(changes, setPath);
    for (std::uint32_t index = 0; index < plan.chunkCount; ++index) {
        steps.set({fxId, effect_property::firstChunk + index},
                  {registry_type::binary, blobOf(preset, chunkOf(plan, index))});
    }
    for (std::uint32_t index = plan.chunkCount; index < mostChunks(); ++index) {
        steps.remove({fxId, effect_property::firstChunk + index});
    }
    steps.set({fxId, effect_property::engineId}, textValue(platform::guidText(preset.engineId)));
    steps.set({fxId, effect_property::modeFlags},
              numberValue(preset.hardware ? params::mode_flag::hardware : 0));
    steps.set({fxId, effect_property::presetVersion}, numberValue(preset.presetVersion));
    steps.set(params::selectionKey(kind), textValue(platform::guidText(fxId)));
    return changes;
}

Preset readPreset(params::EffectKind kind, const PropertyReader& property) {
    const GUID fxId = guidIn(property, params::selectionKey(kind), "the selection");
    Preset preset;
    preset.presetVersion = numberIn(property({fxId, effect_property::presetVersion})).value_or(0);
    if (preset.presetVersion == 0) {
        refuse("presetVersion {} is missing, 0 or no number",
               platform::KeyToText({fxId, effect_property::presetVersion}));
    }
    const DWORD flags = numberIn(property({fxId, effect_property::modeFlags})).value_or(0);
    preset.hardware = (flags & params::mode_flag::hardware) != 0;
    preset.engineId = guidIn(property, {fxId, effect_property::engineId}, "the engine");
    if (params::FindLayout(preset.engineId) == nullptr) {
        refuse("the engine {} is unknown", platform::guidText(preset.engineId));
    }
    readChunks(preset, fxId, property);
    return preset;
}

}  // namespace korva::tool
