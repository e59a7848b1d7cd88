// Runs a check in a process of its own, so that no module takes the tool with it.
#pragma once

#include <sys/types.h>

#include <functional>
#include <set>

#include "korva/module/check/verdict.h"

namespace korva::tool {

/// Ends what checks leave behind. While it lives, processes that lose their parent come to the tool.
class CheckProcesses {
public:
    CheckProcesses();
    ~CheckProcesses();
    CheckProcesses(const CheckProcesses&) = delete;
    CheckProcesses& operator=(const CheckProcesses&) = delete;

    /// Runs `check` in a copy of this process, which has one thread, no input, and shows nothing; and ends it
    /// and all that it started at the latest after `limitMs`. What `check` throws is its verdict. Throws
    /// `Interrupted`.  [blocks]
    [[nodiscard]] Verdict run(const std::function<Verdict()>& check, int limitMs) const;

private:
    /// Gives what the system says of the end of `check`, whose group is its own.
    int endAll(pid_t check) const;

    std::set<pid_t> others;  ///< Children that the tool was started with: not ours.
};

}  // namespace korva::tool
