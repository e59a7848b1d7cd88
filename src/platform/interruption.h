// Being asked to stop, at the terminal or by the system, and waiting until then at most.
#pragma once

#include <cstdint>

#include "platform/wait_handles.h"

namespace korva::platform {

/// What Ctrl-C counts as.
inline constexpr int keyboardInterruption = 2;

/// From now on what would end this process only raises a flag: SIGINT, SIGTERM and SIGHUP, unless the parent
/// had them ignored; on Windows Ctrl-C and Ctrl-Break, and that the console is closed. Writing to a closed
/// pipe, or past a limit on a file's size, becomes an error of that write. The thread that calls this, once,
/// is the one that waits as below.
void catchInterruptions();

/// The number of the signal that came: `keyboardInterruption`, or another. 0 for none.  [any]
[[nodiscard]] int interruption() noexcept;

/// How a wait ended.
enum class Wait { ready, limitPassed, interrupted };

enum class Direction { read, write };

/// Waits until `handle` is signalled, or can be read or written, or is at its end or broken, for at most
/// `limitMs` milliseconds. An interruption comes first, also one from before: none is lost between a look at
/// the flag and the wait. On Windows a stream always counts as one that can be written. Raises
/// `std::system_error` if the handle can't be waited for.  [blocks]
[[nodiscard]] Wait waitUntilReady(WaitHandle handle, Direction direction, std::int64_t limitMs);

/// Lets time pass, unless an interruption comes.  [blocks]
[[nodiscard]] Wait pauseFor(std::int64_t durationMs);

}  // namespace korva::platform
