#include "framework/shared_recursive_lock.h"

#include "framework/thread_number.h"

namespace korva::framework {

void SharedRecursiveLock::beginBuilding() {
    builder.store(currentThreadNumber(), std::memory_order_relaxed);
    ready.set(0);
}

void SharedRecursiveLock::endBuilding() {
    if (ready.get() == 0) {
        ready.set(1);
    }
}

bool SharedRecursiveLock::waitUntilBuilt() const {
    std::uint32_t seen = 0;
    if (ready.get() == 0 && builder.load(std::memory_order_relaxed) == currentThreadNumber()) {
        return false;
    }
    ready.wait(seen);
    return true;
}

}  // namespace korva::framework
