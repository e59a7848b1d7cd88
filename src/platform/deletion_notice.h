// Whether a watched key tells of its own end.
#pragma once

namespace korva::platform {

/// Whether the deletion of a key that a `RegistryWatch` is armed with signals the watch. Where it doesn't,
/// only another `arm` tells.  [any]
[[nodiscard]] bool tellsOfKeyDeletion() noexcept;

}  // namespace korva::platform
