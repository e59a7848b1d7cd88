// Whether hosts find the library's classes.
#pragma once

#include <filesystem>
#include <functional>
#include <optional>
#include <span>
#include <string>

#include "korva/doctor/finding.h"
#include "platform/registry.h"

namespace korva::tool {

/// Gives the value that is where another is expected; nothing if there is none.
using RegisteredValue =
    std::function<std::optional<platform::RegistryValue>(const platform::RegistryChange&)>;

/// What differs from the values that a registration of `library` writes: one finding for a library that isn't
/// registered at all, one for each other library that is named in its place, and one for each key that is
/// otherwise not as expected. `remedy` is the command that registers it. Pure but for a look at which files
/// are the same.
[[nodiscard]] Findings registrationFindings(std::span<const platform::RegistryChange> expected,
                                            const RegisteredValue& registered,
                                            const std::filesystem::path& library, const std::string& remedy);

/// The same of the registry as it is now. Throws `ToolError` where it can't be read.  [blocks]
[[nodiscard]] Findings checkRegistration(const std::filesystem::path& library, const std::string& remedy);

}  // namespace korva::tool
