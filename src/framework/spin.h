// A short look at memory before a sleep.
#pragma once

#include <atomic>
#include <cstdint>

namespace korva::framework {

/// Looks again and again, for some 50 microseconds at most, before its caller sleeps: waking a thread costs
/// as much or more, so an answer that comes soon is had without. It learns from what came of it: after a spin
/// in vain it leaves the next one out, then the next two, and so on up to 16, so that a thread whose answers
/// are slow, or come from a thread that shares its core, burns next to nothing. On one processor it looks
/// once. Threads may share one: what they learn is a hint.  [any]
class AdaptiveSpin {
public:
    constexpr AdaptiveSpin() noexcept = default;
    /// Leaves so many spins out first, where nothing soon is to be expected.
    constexpr explicit AdaptiveSpin(std::uint8_t leftOutFirst) noexcept : leftOut(leftOutFirst) {}

    /// True as soon as `ready()` is; false if it is time to sleep.
    template <class Ready>
    bool until(const Ready& ready) noexcept {
        return ready() || (isWorthwhile() && spin(&look<Ready>, &ready));
    }

private:
    using Look = bool (*)(const void* ready);

    template <class Ready>
    static bool look(const void* ready) {
        return (*static_cast<const Ready*>(ready))();
    }

    [[nodiscard]] bool isWorthwhile() noexcept;
    bool spin(Look look, const void* ready) noexcept;

    std::atomic<std::uint8_t> leftOut{0};  // spins still to be left out
    std::atomic<std::uint8_t> penalty{0};  // how many were left out after the last one in vain
};

}  // namespace korva::framework
