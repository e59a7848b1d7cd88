// Small numbers for the live instances of a process.
#pragma once

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

#include "platform/mutex.h"

namespace korva::services {

/// Hands out each number once: the one that came back last or, if all are out, the least that was never out,
/// from 0.  [any]
class InstanceNumberPool {
public:
    /// Once all of so many numbers are out, everybody gets 0.
    static constexpr std::uint32_t largestCount = 0x7FFFFFFF;

    /// A number that is out, and how many are with it.
    struct Taken {
        std::uint32_t number;
        std::size_t inUse;
    };

    explicit InstanceNumberPool(std::uint32_t count = largestCount) noexcept : limit(count) {}

    [[nodiscard]] Taken take();
    /// Gives how many are out without it.
    std::size_t giveBack(std::uint32_t number);

    /// The process's own; made when it is first asked for.
    [[nodiscard]] static InstanceNumberPool& ofProcess();

private:
    platform::Mutex mutex;
    const std::uint32_t limit;
    std::uint32_t nextNew = 0;
    std::size_t inUse = 0;
    std::vector<std::uint32_t> returned;
};

/// A number of the process's pool, for as long as this lives or until it is given back.
class InstanceNumber {
public:
    InstanceNumber() : taken(InstanceNumberPool::ofProcess().take()) {}
    ~InstanceNumber() { giveBack(); }
    InstanceNumber(const InstanceNumber&) = delete;
    InstanceNumber& operator=(const InstanceNumber&) = delete;

    [[nodiscard]] std::uint32_t get() const noexcept { return taken.number; }
    /// Whether no other was out when it was taken.
    [[nodiscard]] bool wasFirst() const noexcept { return taken.inUse == 1; }

    /// True if that was the last one out; false once it was given back.
    bool giveBack() {
        return std::exchange(isOut, false) && InstanceNumberPool::ofProcess().giveBack(taken.number) == 0;
    }

private:
    const InstanceNumberPool::Taken taken;
    bool isOut = true;
};

}  // namespace korva::services
