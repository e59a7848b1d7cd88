// How the load of an instance went of late.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <string>

namespace korva::tool {

/// Loads in tenths of a percent, the newest last.
class LoadHistory {
public:
    static constexpr std::size_t capacity = 60;

    void add(std::uint32_t load);

    /// The newest `width` at most, a character each. Its height is the load: from the lowest one, which is
    /// less than an eighth of the buffer's time, to the highest, which is seven eighths and more. Without
    /// Unicode the digits 0 to 7.
    [[nodiscard]] std::string text(std::size_t width, bool unicode) const;

private:
    std::deque<std::uint32_t> loads;
};

}  // namespace korva::tool
