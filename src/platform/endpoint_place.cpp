#include "platform/endpoint_place.h"

#include <algorithm>

#include "platform/property_key.h"

namespace korva::platform {
namespace {

constexpr std::string_view renderPrefix = "{0.0.0.00000000}.";
constexpr std::string_view capturePrefix = "{0.0.1.00000000}.";

/// ASCII only: all that an identifier is made of.
std::string lowerCase(std::string_view text) {
    std::string lower(text);
    std::ranges::transform(lower, lower.begin(), [](char c) {
        return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    });
    return lower;
}

}  // namespace

std::string endpointIdOf(const EndpointPlace& place) {
    return std::string(place.flow == eCapture ? capturePrefix : renderPrefix) + guidText(place.guid);
}

std::optional<EndpointPlace> endpointPlaceOf(std::string_view id) {
    if (id.starts_with(renderPrefix)) {
        return endpointPlaceOf(eRender, id.substr(renderPrefix.size()));
    }
    if (id.starts_with(capturePrefix)) {
        return endpointPlaceOf(eCapture, id.substr(capturePrefix.size()));
    }
    return std::nullopt;
}

std::optional<EndpointPlace> endpointPlaceOf(EDataFlow flow, std::string_view keyName) {
    // Reading a GUID skips what is no digit, so the text has to be the one that the GUID gives.
    const GUID guid = GuidFromText(keyName);
    if (guidText(guid) != lowerCase(keyName)) {
        return std::nullopt;
    }
    return EndpointPlace{flow, guid};
}

std::string_view endpointsPath() noexcept {
    return "Software\\Microsoft\\Windows\\CurrentVersion\\MMDevices\\Audio";
}

std::string endpointsPath(EDataFlow flow) {
    return std::string(endpointsPath()) + (flow == eCapture ? "\\Capture" : "\\Render");
}

std::string endpointPath(const EndpointPlace& place) {
    return endpointsPath(place.flow) + "\\" + guidText(place.guid);
}

}  // namespace korva::platform
