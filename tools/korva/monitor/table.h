// Instances as rows of a table.
#pragma once

#include <cstddef>
#include <limits>
#include <span>
#include <string>
#include <vector>

#include "korva/monitor/instance_view.h"

namespace korva::tool {

inline constexpr std::size_t anyWidth = std::numeric_limits<std::size_t>::max();

/// A line of headings and one for each instance, none of more than `width` cells. Where that is too few, the
/// least telling columns are left out and names are cut; with any width names are whole.
[[nodiscard]] std::vector<std::string> tableOf(std::span<const InstanceView> instances, std::size_t width);

/// The levels of each plane in decibels, a column for each set, with a line of headings.
[[nodiscard]] std::vector<std::string> levelTableOf(const InstanceView& view);

}  // namespace korva::tool
