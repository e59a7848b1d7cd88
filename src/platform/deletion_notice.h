// Whether a watched key tells of its own end.
#pragma once

namespace korva::platform {

/// Whether the deletion of a key that a `RegistryWatch` is armed with signals the watch. Where it doesn't,
/// only a look at the key tells.  [any]
[[nodiscard]] bool tellsOfKeyDeletion() noexcept;

}  // namespace korva::platform
