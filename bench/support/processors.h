// Which processor a thread runs on.
#pragma once

#include <sys/types.h>

namespace korva::bench {

/// Where the threads of a case run. Without a choice of ours the kernel puts them on one processor or on
/// several as it likes, anew in each run. To wake a thread on the caller's own processor costs a switch; one
/// on an idle processor has to be sent a message and finds its way out of sleep, which costs a multiple.
enum class Place {
    apart,    ///< The thread that is called has the second processor, its callers the first.
    together  ///< All have the first.
};

/// Binds a thread to the processor that callers have.  [any]
void bindCaller(pid_t thread);

/// Binds a thread to the processor that the one who is called has. Both raise std::runtime_error if the
/// process may not use that processor.  [any]
void bindTarget(pid_t thread, Place place);

}  // namespace korva::bench
