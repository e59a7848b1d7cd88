#include "korva/preset/field_words.h"

#include <fmt/core.h>

#include <algorithm>
#include <array>

namespace korva::tool {
namespace {

using params::ParamField;
using params::ParamFieldType;

constexpr std::array<std::string_view, 7> formKeys = {"bytes", "floats", "uints", "ints",
                                                      "words", "bools",  "fields"};

std::string_view fieldWord(ParamFieldType type) noexcept {
    switch (type) {
        case ParamFieldType::Bool:
            return "bool";
        case ParamFieldType::Byte8:
            return "byte";
        case ParamFieldType::Word16A:
        case ParamFieldType::Word16B:
            return "word";
        case ParamFieldType::Int32:
            return "int";
        case ParamFieldType::UInt32:
            return "uint";
        case ParamFieldType::Float32:
            return "float";
        case ParamFieldType::Bytes:
            break;
    }
    return "byte";
}

/// Past the last field that is named together with the one at `begin`.
std::uint32_t runEnd(const params::ParamDescriptor& descriptor, std::uint32_t begin) {
    const ParamFieldType type = descriptor.fields[begin].type;
    std::uint32_t end = begin + 1;
    while (type != ParamFieldType::Bytes && end < descriptor.fieldCount &&
           descriptor.fields[end].type != ParamFieldType::Bytes &&
           fieldWord(descriptor.fields[end].type) == fieldWord(type)) {
        ++end;
    }
    return end;
}

std::string runText(const ParamField& field, std::uint32_t count) {
    const std::string_view word = fieldWord(field.type);
    if (field.type == ParamFieldType::Bytes) {
        return fmt::format("{} bytes", field.length);
    }
    return count == 1 ? std::string(word) : fmt::format("{} {}s", count, word);
}

}  // namespace

std::string_view formKey(ValueForm form) noexcept {
    return formKeys[static_cast<std::size_t>(form)];
}

std::optional<ValueForm> formOfKey(std::string_view key) noexcept {
    const auto found = std::ranges::find(formKeys, key);
    return found == formKeys.end() ? std::nullopt
                                   : std::optional(static_cast<ValueForm>(found - formKeys.begin()));
}

ValueForm formOfField(ParamFieldType type) noexcept {
    switch (type) {
        case ParamFieldType::Bool:
            return ValueForm::bools;
        case ParamFieldType::Word16A:
        case ParamFieldType::Word16B:
            return ValueForm::words;
        case ParamFieldType::Int32:
            return ValueForm::ints;
        case ParamFieldType::UInt32:
            return ValueForm::uints;
        case ParamFieldType::Float32:
            return ValueForm::floats;
        case ParamFieldType::Byte8:
        case ParamFieldType::Bytes:
            break;
    }
    return ValueForm::fields;
}

ValueForm formOfFields(const params::ParamDescriptor& descriptor) noexcept {
    const ValueForm first = formOfField(descriptor.fields[0].type);
    const bool allAlike =
        std::all_of(descriptor.fields, descriptor.fields + descriptor.fieldCount,
                    [first](const ParamField& field) { return formOfField(field.type) == first; });
    return allAlike ? first : ValueForm::fields;
}

std::string fieldsText(const params::ParamDescriptor& descriptor) {
    std::string text;
    for (std::uint32_t begin = 0; begin < descriptor.fieldCount;) {
        const std::uint32_t end = runEnd(descriptor, begin);
        text += (text.empty() ? "" : ", ") + runText(descriptor.fields[begin], end - begin);
        begin = end;
    }
    return text;
}

}  // namespace korva::tool
