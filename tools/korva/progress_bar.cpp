#include "korva/progress_bar.h"

#include <fmt/core.h>

#include <algorithm>
#include <string>
#include <utility>

namespace korva::tool {
namespace {

constexpr auto patience = std::chrono::seconds(1);
constexpr auto period = std::chrono::milliseconds(100);
constexpr std::uint64_t width = 40;

}  // namespace

ProgressBar::ProgressBar(std::FILE* drawOn, std::optional<std::uint64_t> countTo, Now clock)
    : terminal(countTo.value_or(0) > 0 ? drawOn : nullptr),
      total(countTo.value_or(0)),
      now(std::move(clock)),
      nextDraw(now() + patience) {}

ProgressBar::~ProgressBar() {
    finish();
}

void ProgressBar::update(std::uint64_t done) {
    if (terminal == nullptr) {
        return;
    }
    const Clock::time_point time = now();
    if (time >= nextDraw) {
        nextDraw = time + period;
        draw(std::min(done, total));
    }
}

void ProgressBar::draw(std::uint64_t done) {
    const double part = static_cast<double>(done) / static_cast<double>(total);
    const auto filled = static_cast<std::size_t>(part * static_cast<double>(width));
    const std::string line =
        fmt::format("\r[{:<{}}] {:3} %", std::string(filled, '#'), width, static_cast<int>(part * 100.0));
    std::fwrite(line.data(), 1, line.size(), terminal);
    std::fflush(terminal);
    drawn = true;
}

void ProgressBar::finish() {
    if (drawn) {
        std::fputs("\r\x1b[K", terminal);
        std::fflush(terminal);
        drawn = false;
    }
    terminal = nullptr;
}

}  // namespace korva::tool
