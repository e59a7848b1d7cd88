#include "korva/doctor/stored_text.h"

#include "platform/property_value.h"
#include "platform/published/results.h"
#include "platform/registry_values.h"
#include "platform/unicode.h"

namespace korva::tool {

std::optional<std::string> storedText(const platform::RegistryValue& value) {
    platform::PropertyValue variant;
    if (platform::variantOf(value, *variant.out()) != published::ok || variant->vt != VT_LPWSTR) {
        return std::nullopt;
    }
    return platform::toUtf8(variant->pwszVal);
}

std::optional<std::uint32_t> storedNumber(const platform::RegistryValue& value) {
    platform::PropertyValue variant;
    if (platform::variantOf(value, *variant.out()) != published::ok || variant->vt != VT_UI4) {
        return std::nullopt;
    }
    return variant->ulVal;
}

}  // namespace korva::tool
