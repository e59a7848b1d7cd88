#include "korva/registry/value_json.h"

#include <cstdint>
#include <string>
#include <variant>
#include <vector>

#include "korva/registry/value_text.h"

namespace korva::tool {

Json valueJson(const std::string& name, const platform::RegistryValue& value) {
    Json json = {{"name", name}, {"type", typeName(value.type)}};
    const ReadableData readable = readableData(value);
    if (const auto* const text = std::get_if<std::string>(&readable.data)) {
        json["data"] = *text;
    } else if (const auto* const number = std::get_if<std::uint64_t>(&readable.data)) {
        json["data"] = *number;
    } else if (const auto* const texts = std::get_if<std::vector<std::string>>(&readable.data)) {
        json["data"] = *texts;
    }
    if (!readable.isExact) {
        json["bytes"] = hexDigits(value.data);
    }
    return json;
}

std::string jsonLine(const Json& json) {
    return json.dump(-1, ' ', false, Json::error_handler_t::replace) + "\n";
}

}  // namespace korva::tool
