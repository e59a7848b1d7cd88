// A count of shares inside an object: the last share deletes it.
#pragma once

#include <atomic>
#include <cstdint>

namespace korva::framework {

/// Base of a class `Self` that is shared by count; its creator has the first share (`Ref::adopt`).  [any]
template <class Self>
class SharedCount {
public:
    SharedCount(const SharedCount&) = delete;
    SharedCount& operator=(const SharedCount&) = delete;

    void AddRef() const noexcept { shareCount.fetch_add(1, std::memory_order_relaxed); }

    void Release() const noexcept {
        // Whoever deletes sees what all the others wrote before they let go.
        if (shareCount.fetch_sub(1, std::memory_order_acq_rel) == 1) {
            delete static_cast<const Self*>(this);
        }
    }

protected:
    SharedCount() = default;
    ~SharedCount() = default;

private:
    mutable std::atomic<std::uint32_t> shareCount{1};
};

}  // namespace korva::framework
