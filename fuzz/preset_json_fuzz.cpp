// Presets from outside: refused with faults that have a place, or the same again after a registry and a text.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <map>
#include <string>

#include "fuzz/require.h"
#include "korva/preset/preset_properties.h"
#include "korva/preset/preset_text.h"
#include "platform/property_key.h"

namespace {

using korva::fuzz::require;
using korva::platform::RegistryChange;
using korva::platform::RegistryValue;
using korva::tool::Preset;
using Changes = std::vector<RegistryChange>;

constexpr auto kind = korva::params::EffectKind::endpoint;

bool isSame(const Changes& a, const Changes& b) {
    return std::ranges::equal(a, b, [](const RegistryChange& x, const RegistryChange& y) {
        return x.kind == y.kind && x.path == y.path && x.name == y.name && x.value.type == y.value.type &&
               x.value.data == y.value.data;
    });
}

Preset readBack(const Changes& changes) {
    std::map<std::string, RegistryValue> values;
    for (const RegistryChange& change : changes) {
        if (change.kind == RegistryChange::Kind::setValue) {
            values[change.name] = change.value;
        }
    }
    return korva::tool::readPreset(kind, [&](const PROPERTYKEY& key) {
        const auto found = values.find(korva::platform::KeyToText(key));
        return found == values.end() ? std::nullopt : std::optional(found->second);
    });
}

void comesBack(const Preset& preset) {
    const Changes changes = korva::tool::presetChanges(preset, "Set", kind);
    const Preset stored = readBack(changes);
    require(isSame(korva::tool::presetChanges(stored, "Set", kind), changes));
    const auto again = korva::tool::readPresetText(korva::tool::presetText(stored));
    require(again.preset && again.preset->parameters == stored.parameters);
    require(isSame(korva::tool::presetChanges(*again.preset, "Set", kind), changes));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto read = korva::tool::readPresetText({reinterpret_cast<const char*>(data), size});
    require(read.preset.has_value() == read.faults.empty());
    for (const korva::tool::TextFault& fault : read.faults) {
        require(!fault.message.empty() && fault.line <= size + 1 && fault.column <= size + 1);
    }
    if (read.preset) {
        comesBack(*read.preset);
    }
    return 0;
}
