#include "korva/preset/field_values.h"

#include <fmt/core.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>

namespace korva::tool {
namespace {

using params::ParamField;
using params::ParamFieldType;

using Bytes = std::vector<std::byte>;

/// What a value isn't, in words; empty if all is well.
using Complaint = std::string;

int hexadecimalDigit(char c) {
    if (c >= '0' && c <= '9') {
        return c - '0';
    }
    const char lower = static_cast<char>(c | 0x20);
    return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

Complaint appendHex(Bytes& bytes, const JsonValue& value) {
    const auto* const text = value.as<std::string>();
    if (text == nullptr) {
        return fmt::format("expected hexadecimal digits in quotes, got {}", valueText(value));
    }
    for (std::size_t i = 0; i < text->size(); ++i) {
        if (hexadecimalDigit((*text)[i]) < 0) {
            return fmt::format("expected hexadecimal digits, got another character at position {}", i + 1);
        }
    }
    if (text->size() % 2 != 0) {
        return fmt::format("expected two hexadecimal digits a byte, got {} digits", text->size());
    }
    for (std::size_t i = 0; i < text->size(); i += 2) {
        bytes.push_back(
            static_cast<std::byte>(hexadecimalDigit((*text)[i]) << 4 | hexadecimalDigit((*text)[i + 1])));
    }
    return {};
}

/// The lowest `width` bytes of a number.
void appendNumber(Bytes& bytes, std::uint64_t number, std::uint64_t width) {
    for (std::uint64_t i = 0; i < width; ++i) {
        bytes.push_back(static_cast<std::byte>(number >> (8 * i)));
    }
}

struct Range {
    std::int64_t lowest;
    std::int64_t highest;
};

/// Bytes and words may be meant with a sign or without: only the module knows.
Range rangeOf(ParamFieldType type) {
    switch (type) {
        case ParamFieldType::Byte8:
            return {-128, 255};
        case ParamFieldType::Word16A:
        case ParamFieldType::Word16B:
            return {-32768, 65535};
        case ParamFieldType::UInt32:
            return {0, std::numeric_limits<std::uint32_t>::max()};
        default:
            return {std::numeric_limits<std::int32_t>::min(), std::numeric_limits<std::int32_t>::max()};
    }
}

Complaint appendWhole(Bytes& bytes, const ParamField& field, const JsonValue& value) {
    const auto [lowest, highest] = rangeOf(field.type);
    const auto* const number = value.as<std::int64_t>();
    if (number == nullptr || *number < lowest || *number > highest) {
        return fmt::format("expected a whole number from {} to {}, got {}", lowest, highest,
                           valueText(value));
    }
    appendNumber(bytes, static_cast<std::uint64_t>(*number), field.length);
    return {};
}

Complaint appendFloat(Bytes& bytes, const JsonValue& value) {
    const auto* const whole = value.as<std::int64_t>();
    const auto* const floating = value.as<double>();
    if (whole == nullptr && floating == nullptr) {
        return fmt::format("expected a number, got {}", valueText(value));
    }
    const float number = whole != nullptr ? static_cast<float>(*whole) : static_cast<float>(*floating);
    if (!std::isfinite(number)) {
        return fmt::format("expected a number in the range of a 32-bit float, got {}", valueText(value));
    }
    appendNumber(bytes, std::bit_cast<std::uint32_t>(number), 4);
    return {};
}

Complaint appendBool(Bytes& bytes, const JsonValue& value) {
    const auto* const truth = value.as<bool>();
    if (truth == nullptr) {
        return fmt::format("expected true or false, got {}", valueText(value));
    }
    bytes.push_back(static_cast<std::byte>(*truth));
    return {};
}

Complaint appendBlock(Bytes& bytes, const ParamField& field, const JsonValue& value) {
    const std::size_t before = bytes.size();
    Complaint complaint = appendHex(bytes, value);
    if (complaint.empty() && bytes.size() - before != field.length) {
        complaint = fmt::format("expected {} bytes, got {}", field.length, bytes.size() - before);
    }
    return complaint;
}

Complaint appendField(Bytes& bytes, const ParamField& field, const JsonValue& value) {
    switch (field.type) {
        case ParamFieldType::Bool:
            return appendBool(bytes, value);
        case ParamFieldType::Float32:
            return appendFloat(bytes, value);
        case ParamFieldType::Bytes:
            return appendBlock(bytes, field, value);
        default:
            return appendWhole(bytes, field, value);
    }
}

/// What is wrong with the array of values as a whole.
Complaint complaintAboutArray(const JsonValue& value, ValueForm form,
                              const params::ParamDescriptor& descriptor) {
    if (form != ValueForm::fields && form != formOfFields(descriptor)) {
        return fmt::format("the parameter isn't made of {} but of {}; use '{}'", formKey(form),
                           fieldsText(descriptor), formKey(formOfFields(descriptor)));
    }
    const auto* const values = value.as<JsonValue::Array>();
    if (values == nullptr) {
        return fmt::format("expected an array, got {}", valueText(value));
    }
    if (values->size() != descriptor.fieldCount) {
        return fmt::format("expected {} value{}, got {}", descriptor.fieldCount,
                           descriptor.fieldCount == 1 ? "" : "s", values->size());
    }
    return {};
}

/// Whether nothing was wrong.
bool note(std::vector<TextFault>& faults, const std::string& place, Complaint complaint) {
    if (complaint.empty()) {
        return true;
    }
    faults.push_back({place, std::move(complaint)});
    return false;
}

std::optional<Bytes> bytesOfHex(const JsonValue& value, const std::string& place,
                                std::vector<TextFault>& faults) {
    Bytes bytes;
    Complaint complaint = appendHex(bytes, value);
    if (bytes.size() > maxParameterBytes) {
        complaint = fmt::format("expected {} bytes at most, got {}", maxParameterBytes, bytes.size());
    }
    return note(faults, place, std::move(complaint)) ? std::optional(std::move(bytes)) : std::nullopt;
}

}  // namespace

std::optional<Bytes> bytesOfValue(const JsonValue& value, ValueForm form,
                                  const params::ParamDescriptor& descriptor, const std::string& place,
                                  std::vector<TextFault>& faults) {
    if (form == ValueForm::bytes) {
        return bytesOfHex(value, place, faults);
    }
    if (!note(faults, place, complaintAboutArray(value, form, descriptor))) {
        return std::nullopt;
    }
    const auto& values = *value.as<JsonValue::Array>();
    Bytes bytes;
    bool isRight = true;
    for (std::uint32_t i = 0; i < descriptor.fieldCount; ++i) {
        Complaint complaint = appendField(bytes, descriptor.fields[i], values[i]);
        isRight &= complaint.empty() || note(faults, fmt::format("{}[{}]", place, i), std::move(complaint));
    }
    return isRight ? std::optional(std::move(bytes)) : std::nullopt;
}

}  // namespace korva::tool
