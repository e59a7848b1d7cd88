// What this process holds, for finding what a module doesn't give back.
#pragma once

#include <cstddef>
#include <functional>
#include <string_view>

namespace korva::tool {

struct Footprint {
    std::size_t heapBytes;
    std::size_t mappedBytes;  ///< 0 under a sanitizer, which maps at will.
    std::size_t descriptors;
    std::size_t threads;
};

[[nodiscard]] Footprint measureFootprint();

/// Repeats `cycle`, and throws `CheckFailed` if something grows each time, over many of them. A module may
/// keep what it fills once. `what` names a cycle: "load and unload".
void expectNoGrowth(std::string_view what, const std::function<void()>& cycle);

}  // namespace korva::tool
