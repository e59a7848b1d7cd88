#include <fmt/core.h>

#include <bit>
#include <cmath>
#include <cstdlib>
#include <span>

#include "korva/preset/field_words.h"
#include "korva/preset/preset_text.h"
#include "platform/property_key.h"

namespace korva::tool {
namespace {

using params::ParamField;
using params::ParamFieldType;

std::string hexText(std::span<const std::byte> bytes) {
    std::string text = "\"";
    for (const std::byte byte : bytes) {
        text += fmt::format("{:02x}", std::to_integer<unsigned>(byte));
    }
    return text + "\"";
}

std::uint32_t numberOf(std::span<const std::byte> bytes) {
    std::uint32_t number = 0;
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        number |= std::to_integer<std::uint32_t>(bytes[i]) << (8 * i);
    }
    return number;
}

/// The shortest text that reads as this very float. Readers take the nearest double first: where that leads
/// to another float, as for all that isn't finite, there is none.
std::optional<std::string> floatText(float value) {
    if (!std::isfinite(value)) {
        return std::nullopt;
    }
    std::string text = fmt::format("{}", value);
    if (text.find_first_of(".e") == std::string::npos) {
        text += ".0";
    }
    const auto read = static_cast<float>(std::strtod(text.c_str(), nullptr));
    const bool isSame = std::bit_cast<std::uint32_t>(read) == std::bit_cast<std::uint32_t>(value);
    return isSame ? std::optional(text) : std::nullopt;
}

/// Nothing if no value of the field says these bytes.
std::optional<std::string> fieldText(const ParamField& field, std::span<const std::byte> bytes) {
    switch (field.type) {
        case ParamFieldType::Bool:
            return numberOf(bytes) > 1 ? std::nullopt
                                       : std::optional(numberOf(bytes) == 1 ? "true" : "false");
        case ParamFieldType::Int32:
            return std::to_string(std::bit_cast<std::int32_t>(numberOf(bytes)));
        case ParamFieldType::Float32:
            return floatText(std::bit_cast<float>(numberOf(bytes)));
        case ParamFieldType::Bytes:
            return hexText(bytes);
        default:
            return std::to_string(numberOf(bytes));
    }
}

std::optional<std::string> fieldsArray(const params::ParamDescriptor& descriptor,
                                       std::span<const std::byte> bytes) {
    if (bytes.size() != params::payloadSize(descriptor)) {
        return std::nullopt;
    }
    std::string text;
    for (std::uint32_t i = 0; i < descriptor.fieldCount; ++i) {
        const ParamField& field = descriptor.fields[i];
        const std::optional<std::string> value = fieldText(field, bytes.first(field.length));
        if (!value) {
            return std::nullopt;
        }
        text += (i == 0 ? "" : ", ") + *value;
        bytes = bytes.subspan(field.length);
    }
    return "[" + text + "]";
}

std::string valueMember(const params::ParamDescriptor& descriptor, std::span<const std::byte> bytes) {
    const std::optional<std::string> array = fieldsArray(descriptor, bytes);
    const ValueForm form = array ? formOfFields(descriptor) : ValueForm::bytes;
    return fmt::format("\"{}\": {}", formKey(form), array ? *array : hexText(bytes));
}

std::string parametersArray(const Preset& preset, const params::ParamLayout& layout) {
    std::string text;
    for (const auto& [place, bytes] : preset.parameters) {
        text += text.empty() ? "\n" : ",\n";
        text += fmt::format("    {{\"module\": {}, \"id\": {}, {}}}", place.module, place.id,
                            valueMember(*findParameter(layout, place), bytes));
    }
    return text.empty() ? "[]" : "[" + text + "\n  ]";
}

}  // namespace

std::string presetText(const Preset& preset) {
    return fmt::format(
        "{{\n"
        "  \"engine\": \"{}\",\n"
        "  \"presetVersion\": {},\n"
        "  \"hardware\": {},\n"
        "  \"parameters\": {}\n"
        "}}\n",
        platform::guidText(preset.engineId), preset.presetVersion, preset.hardware,
        parametersArray(preset, *params::FindLayout(preset.engineId)));
}

}  // namespace korva::tool
