// Keeping memory resident, so that a real-time thread never waits for a page.
#pragma once

#include <cstddef>
#include <optional>

namespace korva::platform {

/// Locks the pages that hold `size` bytes at `start` into memory, for the life of the process. False where
/// the system refuses (a limit on locked memory, say); the memory then works as before.  [any, blocks]
bool lockMemory(const void* start, std::size_t size) noexcept;

/// How many bytes all that a process of this user locks may come to; nothing where there is no such limit,
/// for this process or at all.  [any]
[[nodiscard]] std::optional<std::size_t> lockableMemory() noexcept;

}  // namespace korva::platform
