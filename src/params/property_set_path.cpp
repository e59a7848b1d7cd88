#include "params/property_set_path.h"

namespace korva::params {
namespace {

bool isOnePart(std::string_view name) noexcept {
    return name.find_first_of("\\/") == std::string_view::npos;
}

}  // namespace

std::string propertySetPath(std::string_view endpointId, std::string_view setName) {
    if (!isOnePart(endpointId) || !isOnePart(setName)) {
        return {};
    }
    std::string path = "Software\\Veltrane\\APO\\";
    path += endpointId;
    path += "\\FxProperties\\";
    path += setName;
    return path;
}

}  // namespace korva::params
