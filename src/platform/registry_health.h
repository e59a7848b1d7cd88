// How the registry's file does.
#pragma once

#include <cstdint>
#include <limits>
#include <string>

#include "platform/registry.h"

namespace korva::platform {

/// What can be told without a change to it. Of the system's own registry only `result` is ever other than in
/// a sound one: the system takes care of it.
struct RegistryHealth {
    RegistryResult result = registry_result::success;  ///< Why it can't be used at all.
    bool isThere = true;                               ///< Else it is made when it is first used.
    std::string damage{};                              ///< The first fault of the file's structure, if any.
    bool isWritable = true;                            ///< For this process.
    bool isFolderWritable = true;                      ///< For the files that lie beside it.
    std::uint64_t freeBytes = std::numeric_limits<std::uint64_t>::max();  ///< On its disk, for this user.
};

/// Reads all of the registry's file, and makes none. Where it isn't there, or can't be used, the rest is as
/// of a sound one.  [any, blocks]
[[nodiscard]] RegistryHealth examineRegistry();

}  // namespace korva::platform
