// How far the work has come, for someone who waits at a terminal.
#pragma once

#include <chrono>
#include <cstdint>
#include <cstdio>
#include <functional>
#include <optional>

namespace korva::tool {

/// One line that is drawn once the work has taken a second, renewed ten times a second, and gone at the end.
class ProgressBar {
public:
    using Clock = std::chrono::steady_clock;
    using Now = std::function<Clock::time_point()>;

    /// Draws on `drawOn`; null draws nowhere. `countTo` is where `update` ends; without that nothing is
    /// drawn.
    ProgressBar(std::FILE* drawOn, std::optional<std::uint64_t> countTo, Now clock = &Clock::now);
    ~ProgressBar();
    ProgressBar(const ProgressBar&) = delete;
    ProgressBar& operator=(const ProgressBar&) = delete;

    void update(std::uint64_t done);
    /// Removes the line. Nothing is drawn after it.
    void finish();

private:
    void draw(std::uint64_t done);

    std::FILE* terminal;
    std::uint64_t total;
    Now now;
    Clock::time_point nextDraw;
    bool drawn = false;
};

}  // namespace korva::tool
