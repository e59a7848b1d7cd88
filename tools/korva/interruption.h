// Stopping in good order when a signal asks for it.
#pragma once

namespace korva::tool {

enum class Direction { read, write };

/// From now on SIGINT, SIGTERM and SIGHUP only raise a flag, unless the parent had them ignored. Writing to a
/// closed pipe, or past a limit on a file's size, becomes an error of that write.
void catchInterruptions();

/// Whether one of those signals has come; and throws `Interrupted` then.
[[nodiscard]] bool isInterrupted();
void throwIfInterrupted();

/// Waits until `descriptor` can be read or written, or is at its end or broken. Throws `Interrupted` if a
/// signal comes first: none is lost between a look at the flag and the wait.  [blocks]
void waitUntilReady(int descriptor, Direction direction);

/// The same for at most `limitMs` milliseconds: false if they pass first.
bool waitUntilReady(int descriptor, Direction direction, int limitMs);

/// Lets time pass, unless a signal comes.  [blocks]
void pauseFor(int durationMs);

}  // namespace korva::tool
