// What SQLite refuses, in the registry's results.
#pragma once

#include <sqlite3.h>

#include "platform/registry.h"

namespace korva::platform::embedded {

/// Thrown by everything here that asks SQLite, and caught where the registry's contract begins.
struct Failure {
    RegistryResult result;
};

/// The result for the last call of `connection`, which gave `code`.  [any]
[[nodiscard]] RegistryResult resultOf(sqlite3* connection, int code) noexcept;

/// The result for a number of the system's, as calls leave it in `errno`.  [any]
[[nodiscard]] RegistryResult resultOfSystemError(int systemError) noexcept;

/// Throws unless `code` is SQLITE_OK.
void require(sqlite3* connection, int code);

}  // namespace korva::platform::embedded
