// Values of the registry as JSON.
#pragma once

#include <string>

#include "korva/json.h"
#include "platform/registry.h"

namespace korva::tool {

/// "name", "type", and "data" as text, number or list of texts, where the bytes can be read so. Where that
/// leaves something out, or they can't, "bytes" has them as hexadecimal digits.
[[nodiscard]] Json valueJson(const std::string& name, const platform::RegistryValue& value);

/// One line, also for texts that JSON can't hold.
[[nodiscard]] std::string jsonLine(const Json& json);

}  // namespace korva::tool
