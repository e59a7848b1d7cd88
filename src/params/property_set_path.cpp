#include "params/property_set_path.h"

namespace korva::params {
namespace {

bool isOnePart(std::string_view name) noexcept {
    return name.find_first_of("\\/") == std::string_view::npos;
}

}  // namespace

std::string propertySetsPath(std::string_view endpointId) {
    return isOnePart(endpointId) ? "Software\\Veltrane\\APO\\" + std::string(endpointId) : std::string();
}

std::string propertySetPath(std::string_view endpointId, std::string_view setName) {
    if (!isOnePart(endpointId) || !isOnePart(setName)) {
        return {};
    }
    return propertySetsPath(endpointId) + "\\FxProperties\\" + std::string(setName);
}

}  // namespace korva::params
