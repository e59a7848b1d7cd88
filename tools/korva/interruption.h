// Stopping in good order when a signal asks for it.
#pragma once

#include "platform/interruption.h"

namespace korva::tool {

using platform::Direction;

/// Whether a signal has asked for it, see `platform::catchInterruptions`; and throws `Interrupted` then.
[[nodiscard]] bool isInterrupted();
void throwIfInterrupted();

/// Waits until `handle` can be read or written, or is at its end or broken. Throws `Interrupted` if a signal
/// comes first: none is lost between a look at the flag and the wait.  [blocks]
void waitUntilReady(platform::WaitHandle handle, Direction direction);

/// The same for at most `limitMs` milliseconds: false if they pass first.
bool waitUntilReady(platform::WaitHandle handle, Direction direction, int limitMs);

/// Lets time pass, unless a signal comes.  [blocks]
void pauseFor(int durationMs);

}  // namespace korva::tool
