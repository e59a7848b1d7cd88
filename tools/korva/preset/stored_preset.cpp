#include "korva/preset/stored_preset.h"

#include <algorithm>
#include <exception>
#include <map>
#include <optional>
#include <string>
#include <utility>

#include "korva/errors.h"
#include "korva/interruption.h"
#include "korva/registry/registry_errors.h"
#include "platform/property_key.h"

namespace korva::tool {
namespace {

using platform::RegistryValue;

/// Looks at most. An installation takes the time of a few.
constexpr int maxLooks = 200;

std::optional<RegistryValue> valueNamed(const platform::RegistryKey& key, const std::string& name) {
    RegistryValue value;
    const platform::RegistryResult code = key.readValue(name, value);
    if (code == platform::registry_result::notFound) {
        return std::nullopt;
    }
    throwIfRefused(code, "read the preset");
    return value;
}

bool isSame(const std::optional<RegistryValue>& a, const std::optional<RegistryValue>& b) {
    return a.has_value() == b.has_value() && (!a || (a->type == b->type && a->data == b->data));
}

/// One look: what it came upon, and what it made of it.
class Look {
public:
    Look(params::EffectKind kind, const PropertyReader& property) {
        try {
            preset = readPreset(kind, [&](const PROPERTYKEY& key) {
                return values.emplace(platform::KeyToText(key), property(key)).first->second;
            });
        } catch (const NoPreset&) {
            refusal = std::current_exception();
        }
    }

    [[nodiscard]] bool sawTheSameAs(const Look& other) const {
        return std::ranges::equal(values, other.values, [](const auto& a, const auto& b) {
            return a.first == b.first && isSame(a.second, b.second);
        });
    }

    Preset take() {
        if (refusal) {
            std::rethrow_exception(refusal);
        }
        return std::move(preset);
    }

private:
    std::map<std::string, std::optional<RegistryValue>> values;
    Preset preset;
    std::exception_ptr refusal;
};

}  // namespace

Preset readPresetAtRest(params::EffectKind kind, const PropertyReader& property) {
    // Values are read one by one. Those that are the same in two looks were there together at the moment
    // between the two, unless they went and came back in time, which takes several installations.
    std::optional<Look> last;
    for (int looks = 0; looks < maxLooks; ++looks) {
        throwIfInterrupted();
        Look look(kind, property);
        if (last && look.sawTheSameAs(*last)) {
            return look.take();
        }
        last = std::move(look);
    }
    fail("cannot read the preset: another program keeps changing it; try again when it is done");
}

Preset readStoredPreset(const platform::RegistryKey& key, params::EffectKind kind) {
    return readPresetAtRest(
        kind, [&](const PROPERTYKEY& property) { return valueNamed(key, platform::KeyToText(property)); });
}

}  // namespace korva::tool
