// What the file is that is to be the registry, before anything is done to it.
#pragma once

#include <cstdint>
#include <string>

#include "platform/registry.h"

namespace korva::platform::embedded {

inline constexpr std::int32_t applicationId = 0x4B525247;  ///< "KRRG", in the header of a registry's file.
inline constexpr std::int32_t formatVersion = 1;           ///< The newest format that is known here.

/// 0 for a registry, an empty file and none at all; else why the file can't be used. Nothing is changed.
/// [any, blocks]
[[nodiscard]] RegistryResult refusalOf(const std::string& path);

/// The same for a file's own numbers.
[[nodiscard]] RegistryResult refusalOf(std::int64_t application, std::int64_t version) noexcept;

}  // namespace korva::platform::embedded
