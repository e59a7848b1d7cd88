// Audio endpoints in the registry, as an installer makes them: the device, its three sets of effect
// properties, and the key below which live instances tell of themselves.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/endpoint_values.h"

namespace korva::tool {

/// An endpoint that is to be made.
struct NewEndpoint {
    std::string name;  ///< Any text but none, in UTF-8; others may have the same.
    EDataFlow flow = eRender;
    bool isActive = true;
    float volume = 1.0F;  ///< 0.0 to 1.0.
};

/// What is to be different; nothing else is touched.
struct EndpointChange {
    std::optional<std::string> name{};
    std::optional<float> volume{};
    std::optional<bool> isActive{};
};

/// What the registry tells of an endpoint.
struct EndpointDescription {
    platform::EndpointPlace place;
    std::uint32_t state = 0;
    std::string name{};  ///< Empty if it has none.
    platform::EndpointLoudness loudness{};
};

/// Makes an endpoint, and gives its identifier, which nobody had before. Others see all of it at once. Throws
/// `ToolError`, also for a name or a volume that is none.
[[nodiscard]] std::string makeEndpoint(const NewEndpoint& endpoint);

/// Throws `ToolError`, also if there is no such endpoint.
void changeEndpoint(const platform::EndpointPlace& place, const EndpointChange& change);

/// Deletes an endpoint and its sets of properties, at once, and nothing else. Throws `ToolError`, also if
/// there is no such endpoint.
void removeEndpoint(const platform::EndpointPlace& place);

/// All that are there, those to be heard first, in the registry's order. Throws `ToolError`.
[[nodiscard]] std::vector<EndpointDescription> readAllEndpoints();
/// Throws `ToolError`, also if there is no such endpoint.
[[nodiscard]] EndpointDescription readEndpoint(const platform::EndpointPlace& place);

/// The place that an identifier stands for. Throws `ToolError` for a text that is none.
[[nodiscard]] platform::EndpointPlace placeOfId(std::string_view id);

}  // namespace korva::tool
