// Where an endpoint's sets of properties are in the registry.
#pragma once

#include <string>
#include <string_view>

namespace korva::params {

/// The names of the three sets.
namespace property_set {
inline constexpr std::string_view standard = "Default";
inline constexpr std::string_view user = "User";  ///< The one that settings are read from.
inline constexpr std::string_view temporary = "Volatile";
}  // namespace property_set

/// The path, below HKEY_LOCAL_MACHINE, of the key that holds all sets of an endpoint and nothing else. Empty
/// if the identifier holds a slash of either kind.  [any]
[[nodiscard]] std::string propertySetsPath(std::string_view endpointId);

/// The path of a set's key below HKEY_LOCAL_MACHINE. Empty, which is no key's path, if either name holds a
/// slash of either kind: it would lead elsewhere.  [any]
[[nodiscard]] std::string propertySetPath(std::string_view endpointId, std::string_view setName);

}  // namespace korva::params
