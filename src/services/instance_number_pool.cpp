#include "services/instance_number_pool.h"

#include <mutex>

namespace korva::services {

InstanceNumberPool::Taken InstanceNumberPool::take() {
    const std::lock_guard lock(mutex);
    // Room for its return is made now, so that giving it back can't fail.
    returned.reserve(inUse + returned.size() + 1);
    ++inUse;
    if (!returned.empty()) {
        const std::uint32_t number = returned.back();
        returned.pop_back();
        return {number, inUse};
    }
    return {nextNew < limit ? nextNew++ : 0, inUse};
}

std::size_t InstanceNumberPool::giveBack(std::uint32_t number) {
    const std::lock_guard lock(mutex);
    returned.push_back(number);
    return --inUse;
}

InstanceNumberPool& InstanceNumberPool::ofProcess() {
    static InstanceNumberPool pool;
    return pool;
}

}  // namespace korva::services
