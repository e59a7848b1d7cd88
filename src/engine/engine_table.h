// Which module has an engine.
#pragma once

#include <cstdint>
#include <string_view>

#include "platform/published/base_types.h"

namespace korva::engine {

/// Where an engine's work is done.
enum class EnginePlatform { floatingPoint, hardware };

/// The name that a document gives a platform.  [any]
[[nodiscard]] std::string_view platformName(EnginePlatform platform) noexcept;

/// The module that has an engine on a platform: a file's name without folder and suffix. Empty if none has.
/// [any]
[[nodiscard]] std::string_view moduleName(const GUID& engineId, EnginePlatform platform) noexcept;

}  // namespace korva::engine
