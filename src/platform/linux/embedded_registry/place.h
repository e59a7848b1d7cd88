// Where the registry's file is.
#pragma once

#include <string>

namespace korva::platform::embedded {

/// The absolute path that the environment says now; empty if the user has no folder of their own.  [any]
[[nodiscard]] std::string registryPath();

/// The path of the same file that leads over no link; as it is where there is no file yet.
[[nodiscard]] std::string withoutLinks(const std::string& path);

/// Makes the folders on the way to the file that are missing. Those below the user's own folder are for
/// nobody else. What can't be made shows when the file is opened.
void makeFoldersFor(const std::string& path) noexcept;

}  // namespace korva::platform::embedded
