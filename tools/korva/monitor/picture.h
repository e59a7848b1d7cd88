// What the full-screen view shows, as lines of styled text: a terminal only has to paint it.
#pragma once

#include <array>
#include <cstddef>
#include <span>
#include <string>
#include <vector>

#include "korva/monitor/instance_view.h"

namespace korva::tool {

enum class Style { plain, title, faint, selected, quiet, loud, over };

struct StyledText {
    std::string text;
    Style style = Style::plain;

    friend bool operator==(const StyledText&, const StyledText&) = default;
};
using PictureLine = std::vector<StyledText>;
using Picture = std::vector<PictureLine>;

struct ScreenSize {
    std::size_t columns = 80;
    std::size_t rows = 24;

    friend bool operator==(const ScreenSize&, const ScreenSize&) = default;
};

/// All that is on the screen.
struct Scene {
    std::string title;
    std::string notice;  ///< What doesn't go as it should; empty if all does.
    std::span<const InstanceView> instances;
    std::size_t selected = 0;  ///< Below the count of instances, if there are any.
    MeterSet meterSet = MeterSet::input;
    std::array<float, 8> heldPeaks{};  ///< Of the selected instance's set, in decibels.
    std::string loadHistory{};         ///< Of the selected instance, its newest part last.
    bool unicode = true;
};

/// At most as many lines as the screen has rows, none wider than it. Where it is low, the levels and the list
/// stay longest; where it is narrow, columns go and texts are cut.
[[nodiscard]] Picture pictureOf(const Scene& scene, ScreenSize size);

/// The cells that a line takes.
[[nodiscard]] std::size_t cellCount(const PictureLine& line);

}  // namespace korva::tool
