// What tells other processes that the registry changed.
#pragma once

#include <atomic>
#include <cstdint>
#include <string>

namespace korva::platform::embedded {

/// A count in a file of its own, in memory that is shared with every process that has the same registry open.
/// Rung once a change can be seen, it loses none, unlike the system's word of writes to the registry's file:
/// that comes before. Where the file can't be had, the bell is heard in this process only.  [any]
class Bell {
public:
    /// The file is made if it is missing.
    explicit Bell(const std::string& path) noexcept;
    ~Bell();
    Bell(const Bell&) = delete;
    Bell& operator=(const Bell&) = delete;

    /// What a thread did before is seen by those that it wakes.
    void ring() noexcept;

    /// Read it, look, then wait for another count: no ring in between is missed.
    [[nodiscard]] std::uint32_t count() const noexcept { return counter->load(std::memory_order_acquire); }
    /// Waits until the count is another one, or the time is over, or for no reason.  [blocks]
    void waitWhile(std::uint32_t count, std::int64_t limitMs) const noexcept;

private:
    using Counter = std::atomic<std::uint32_t>;
    static_assert(Counter::is_always_lock_free && sizeof(Counter) == 4);

    Counter own{0};
    Counter* counter = &own;
};

}  // namespace korva::platform::embedded
