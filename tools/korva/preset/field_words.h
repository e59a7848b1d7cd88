// The kinds of fields in words, and the forms that presets write them in.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "params/catalogue.h"

namespace korva::tool {

/// How the bytes of a parameter are written.
enum class ValueForm {
    bytes,   ///< Hexadecimal digits, for any parameter and any size.
    floats,  ///< Numbers, for parameters of floats only; likewise the others.
    uints,
    ints,
    words,
    bools,
    fields,  ///< A value for each field, whatever its kind.
};

/// The key of a form; and the form of a key, if it is one's.
[[nodiscard]] std::string_view formKey(ValueForm form) noexcept;
[[nodiscard]] std::optional<ValueForm> formOfKey(std::string_view key) noexcept;

/// The form that a field's kind has for itself; `fields` if it has none.
[[nodiscard]] ValueForm formOfField(params::ParamFieldType type) noexcept;

/// The form of all fields of a parameter; `fields` if they differ or have none.
[[nodiscard]] ValueForm formOfFields(const params::ParamDescriptor& descriptor) noexcept;

/// The fields in short: "bool, 3 floats", "word, 2048 bytes".
[[nodiscard]] std::string fieldsText(const params::ParamDescriptor& descriptor);

}  // namespace korva::tool
