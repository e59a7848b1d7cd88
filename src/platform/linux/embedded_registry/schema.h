// The tables of the registry's file.
#pragma once

#include <cstdint>

#include "embedded_registry/connection.h"

namespace korva::platform::embedded {

/// A key's row. Numbers are never given twice, so one that is deleted is found no more.
using KeyId = std::int64_t;

/// The key above the roots, which nobody opens. Its sequence number is the registry's.
inline constexpr KeyId topKey = 1;
inline constexpr KeyId localMachineKey = 2;
inline constexpr KeyId currentUserKey = 3;

/// Makes the tables of an empty file, and has a writer never hold up readers. Throws `Failure` for a file
/// that is no registry, or one of a newer version.  [blocks]
void prepareFile(Connection& connection);

}  // namespace korva::platform::embedded
