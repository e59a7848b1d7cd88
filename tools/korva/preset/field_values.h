// A parameter's bytes from the values of its fields, as JSON has them.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "korva/preset/field_words.h"
#include "korva/preset/json_tree.h"

namespace korva::tool {

/// Bytes of a parameter at most: an entry of a preset's blob has 16 bits for them.
inline constexpr std::size_t maxParameterBytes = 65535;

/// Reads `value`, which is at `place`, as the bytes of a parameter. Nothing if there are faults, which are
/// added to the others, all of them.
[[nodiscard]] std::optional<std::vector<std::byte>> bytesOfValue(const JsonValue& value, ValueForm form,
                                                                 const params::ParamDescriptor& descriptor,
                                                                 const std::string& place,
                                                                 std::vector<TextFault>& faults);

}  // namespace korva::tool
