// How many processors there are for us.
#pragma once

namespace korva::platform {

/// Processors that this process may run on, at least 1. Fewer than the machine has where the process is
/// confined to some; a narrower choice of the calling thread doesn't count.  [any, blocks]
unsigned processorCount() noexcept;

}  // namespace korva::platform
