#include "korva/monitor/load_history.h"

#include <algorithm>
#include <array>

namespace korva::tool {
namespace {

constexpr std::array<const char*, 8> heights = {"▁", "▂", "▃", "▄", "▅", "▆", "▇", "█"};
constexpr std::uint32_t wholeBuffer = 1000;

std::size_t heightOf(std::uint32_t load) {
    return std::min<std::size_t>(std::size_t{load} * heights.size() / wholeBuffer, heights.size() - 1);
}

}  // namespace

void LoadHistory::add(std::uint32_t load) {
    loads.push_back(load);
    if (loads.size() > capacity) {
        loads.pop_front();
    }
}

std::string LoadHistory::text(std::size_t width, bool unicode) const {
    std::string text;
    for (std::size_t i = loads.size() - std::min(width, loads.size()); i < loads.size(); ++i) {
        const std::size_t height = heightOf(loads[i]);
        text += unicode ? std::string(heights[height]) : std::to_string(height);
    }
    return text;
}

}  // namespace korva::tool
