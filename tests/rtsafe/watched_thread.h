// Runs a call as the audio thread may: without allocation, lock, wait, exception or system call.
#pragma once

#include <functional>
#include <string>

namespace korva::test {

/// What came of a watched call.
struct WatchedResult {
    bool clean = false;     ///< It ran to its end.
    std::string violation;  ///< The function or system call that ended it, if not clean.
    int progress = 0;       ///< The last number given to `noteProgress`.
};

/// Runs `call` on a thread of a child process. There the first allocation, release of memory, lock, wait,
/// exception or system call ends the child and is named. `call` and what it uses must be made beforehand.
[[nodiscard]] WatchedResult runWatched(const std::function<void()>& call);

/// From inside a watched call: how far it has come.
void noteProgress(int number) noexcept;

}  // namespace korva::test
