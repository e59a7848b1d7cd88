#include <fmt/core.h>

#include <algorithm>
#include <array>
#include <limits>
#include <span>

#include "korva/preset/field_values.h"
#include "korva/preset/preset_text.h"
#include "platform/property_key.h"

namespace korva::tool {
namespace {

/// A number of the text, within bounds.
struct WholeRange {
    std::int64_t lowest;
    std::int64_t highest;
};
constexpr WholeRange versions = {1, std::numeric_limits<std::uint32_t>::max()};
constexpr WholeRange identifiers = {std::numeric_limits<std::int32_t>::min(),
                                    std::numeric_limits<std::int32_t>::max()};

constexpr std::array<std::string_view, 4> presetKeys = {"engine", "presetVersion", "hardware", "parameters"};
constexpr std::array<std::string_view, 9> parameterKeys = {"module", "id",    "floats", "uints", "ints",
                                                           "words",  "bools", "fields", "bytes"};
constexpr std::span valueKeys = std::span(parameterKeys).subspan<2>();

std::string listText(std::span<const std::string_view> words, std::string_view last) {
    std::string text;
    for (std::size_t i = 0; i < words.size(); ++i) {
        text += i == 0 ? "" : i + 1 < words.size() ? ", " : last;
        text += words[i];
    }
    return text;
}

/// Goes through the tree once, and notes all that is wrong.
class PresetReader {
public:
    explicit PresetReader(std::vector<TextFault>& found) : faults(found) {}

    Preset read(const JsonValue& tree) {
        if (!isObject(tree, "", presetKeys)) {
            return {};
        }
        readEngine(tree);
        preset.presetVersion =
            static_cast<std::uint32_t>(wholeNumber(tree, "", "presetVersion", versions).value_or(0));
        readHardware(tree);
        readParameters(tree);
        return std::move(preset);
    }

private:
    template <typename... Args>
    void note(std::string place, fmt::format_string<Args...> text, Args&&... args) {
        faults.push_back({std::move(place), fmt::format(text, std::forward<Args>(args)...)});
    }

    static const JsonValue* find(const JsonValue& object, std::string_view key) {
        const auto& members = *object.as<JsonValue::Members>();
        const auto found = std::ranges::find(members, key, &JsonValue::Members::value_type::first);
        return found == members.end() ? nullptr : &found->second;
    }

    /// Also looks for keys that nobody asked for.
    bool isObject(const JsonValue& value, const std::string& place, std::span<const std::string_view> keys) {
        const auto* const members = value.as<JsonValue::Members>();
        if (members == nullptr) {
            note(place, "expected an object, got {}", valueText(value));
            return false;
        }
        for (const auto& [key, member] : *members) {
            if (std::ranges::find(keys, key) == keys.end()) {
                note(place, "unknown key {}; there are {}", inQuotes(key), listText(keys, " and "));
            }
        }
        return true;
    }

    static std::string below(const std::string& place, std::string_view key) {
        return place.empty() ? std::string(key) : fmt::format("{}.{}", place, key);
    }

    const JsonValue* member(const JsonValue& object, const std::string& place, std::string_view key) {
        const JsonValue* const found = find(object, key);
        if (found == nullptr) {
            note(place, "the key '{}' is missing", key);
        }
        return found;
    }

    std::optional<std::int64_t> wholeNumber(const JsonValue& object, const std::string& place,
                                            std::string_view key, WholeRange range) {
        const JsonValue* const found = member(object, place, key);
        if (found == nullptr) {
            return std::nullopt;
        }
        const auto* const number = found->as<std::int64_t>();
        if (number == nullptr || *number < range.lowest || *number > range.highest) {
            note(below(place, key), "expected a whole number from {} to {}, got {}", range.lowest,
                 range.highest, valueText(*found));
            return std::nullopt;
        }
        return *number;
    }

    void readEngine(const JsonValue& tree) {
        const JsonValue* const value = member(tree, "", "engine");
        if (value == nullptr) {
            return;
        }
        const auto* const text = value->as<std::string>();
        layout = text == nullptr ? nullptr : params::FindLayout(platform::GuidFromText(*text));
        if (layout == nullptr) {
            note("engine", "expected a known engine, {}; got {}", knownEnginesText(), valueText(*value));
            return;
        }
        preset.engineId = layout->engineId;
    }

    void readHardware(const JsonValue& tree) {
        const JsonValue* const value = member(tree, "", "hardware");
        if (value == nullptr) {
            return;
        }
        if (const auto* const truth = value->as<bool>()) {
            preset.hardware = *truth;
        } else {
            note("hardware", "expected true or false, got {}", valueText(*value));
        }
    }

    void readParameters(const JsonValue& tree) {
        const JsonValue* const value = member(tree, "", "parameters");
        if (value == nullptr) {
            return;
        }
        const auto* const list = value->as<JsonValue::Array>();
        if (list == nullptr) {
            note("parameters", "expected an array, got {}", valueText(*value));
            return;
        }
        for (std::size_t i = 0; i < list->size(); ++i) {
            readParameter((*list)[i], i);
        }
    }

    void readParameter(const JsonValue& value, std::size_t index) {
        const std::string place = placeOf(index);
        if (!isObject(value, place, parameterKeys)) {
            return;
        }
        const auto module = wholeNumber(value, place, "module", identifiers);
        const auto id = wholeNumber(value, place, "id", identifiers);
        const params::ParamDescriptor* descriptor = nullptr;
        if (module && id) {
            const ParameterPlace parameter{static_cast<std::int32_t>(*module),
                                           static_cast<std::int32_t>(*id)};
            descriptor = describe(parameter, place);
            refuseSecond(parameter, place, index);
            readValue(value, place, descriptor, &preset.parameters[parameter]);
        } else {
            readValue(value, place, nullptr, nullptr);
        }
    }

    static std::string placeOf(std::size_t index) { return fmt::format("parameters[{}]", index); }

    const params::ParamDescriptor* describe(ParameterPlace parameter, const std::string& place) {
        if (layout == nullptr) {
            return nullptr;
        }
        const params::ParamDescriptorList* const list = findModule(*layout, parameter.module);
        if (list == nullptr) {
            note(below(place, "module"), "the engine has modules -1 to {}, not {}",
                 static_cast<std::int64_t>(layout->ModuleCount()) - 1, parameter.module);
            return nullptr;
        }
        const params::ParamDescriptor* const descriptor = findParameter(*layout, parameter);
        if (descriptor == nullptr) {
            note(below(place, "id"), "module {} has parameters {} to {}, not {}", parameter.module,
                 list->At(0).paramId, list->At(list->Count() - 1).paramId, parameter.id);
        }
        return descriptor;
    }

    void refuseSecond(ParameterPlace parameter, const std::string& place, std::size_t index) {
        const auto [first, isFirst] = firstIndex.emplace(parameter, index);
        if (!isFirst) {
            note(place, "module {}, id {} is set by {} already", parameter.module, parameter.id,
                 placeOf(first->second));
        }
    }

    /// Without a descriptor it is only known which key the value has.
    void readValue(const JsonValue& parameter, const std::string& place,
                   const params::ParamDescriptor* descriptor, std::vector<std::byte>* bytes) {
        std::vector<std::string_view> keys;
        std::ranges::copy_if(valueKeys, std::back_inserter(keys),
                             [&](std::string_view key) { return find(parameter, key) != nullptr; });
        if (keys.size() != 1) {
            note(place, "expected one of {}, got {}", listText(valueKeys, " and "),
                 keys.empty() ? "none" : listText(keys, " and "));
            return;
        }
        if (descriptor == nullptr) {
            return;
        }
        std::optional<std::vector<std::byte>> read =
            bytesOfValue(*find(parameter, keys.front()), *formOfKey(keys.front()), *descriptor,
                         below(place, keys.front()), faults);
        if (read) {
            *bytes = std::move(*read);
        }
    }

    std::vector<TextFault>& faults;
    Preset preset;
    const params::ParamLayout* layout = nullptr;  ///< Of a known engine.
    std::map<ParameterPlace, std::size_t> firstIndex;
};

}  // namespace

ReadPreset readPresetText(std::string_view text) {
    ReadPreset result;
    const std::optional<JsonValue> tree = parseJson(text, result.faults);
    if (!tree) {
        return result;
    }
    Preset preset = PresetReader(result.faults).read(*tree);
    if (result.faults.empty()) {
        result.preset = std::move(preset);
    }
    return result;
}

std::string faultText(std::string_view file, const TextFault& fault) {
    if (fault.line != 0) {
        return fmt::format("{}:{}:{}: {}", file, fault.line, fault.column, fault.message);
    }
    return fault.place.empty() ? fmt::format("{}: {}", file, fault.message)
                               : fmt::format("{}: {}: {}", file, fault.place, fault.message);
}

std::string knownEnginesText() {
    std::vector<std::string> names;
    std::ranges::transform(
        params::allLayouts(), std::back_inserter(names),
        [](const params::ParamLayout& layout) { return platform::guidText(layout.engineId); });
    const std::vector<std::string_view> words(names.begin(), names.end());
    return listText(words, " or ");
}

}  // namespace korva::tool
