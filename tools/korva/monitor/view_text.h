// What a key tells, in words. "-" is a value that isn't there, "?" one of another type or size.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "korva/monitor/instance_view.h"

namespace korva::tool {

[[nodiscard]] std::string numberText(const Reading<std::uint32_t>& number, const char* unit = "");
[[nodiscard]] std::string effectText(const InstanceView& view);
/// The endpoint's name where there is one, else its identifier.
[[nodiscard]] std::string endpointText(const InstanceView& view);
/// "2 ch 0x3": channels, and the mask of their speakers.
[[nodiscard]] std::string sideText(const StreamSide& side);
/// "2.1.2.17".
[[nodiscard]] std::string libraryVersionText(const Reading<std::uint64_t>& version);
/// "0x00010002": what the number means is the module's.
[[nodiscard]] std::string moduleVersionText(const Reading<std::uint32_t>& version);
/// "3.4 %".
[[nodiscard]] std::string loadText(const Reading<std::uint32_t>& load);
/// The highest level of a set in decibels: "-6.0".
[[nodiscard]] std::string highestLevelText(const Reading<MeterLevels>& meters);

/// The level of one plane likewise.
[[nodiscard]] std::string levelText(const Reading<MeterLevels>& meters, std::size_t plane);

/// "front left", "FL", for each plane of the bus.
[[nodiscard]] const char* planeName(std::size_t plane);
[[nodiscard]] const char* shortPlaneName(std::size_t plane);

/// "input", "output", "DSP input", "DSP output".
[[nodiscard]] const char* meterSetName(MeterSet set);

/// All but the levels: what each is, and what it says.
using Detail = std::pair<std::string, std::string>;
[[nodiscard]] std::vector<Detail> detailsOf(const InstanceView& view);

}  // namespace korva::tool
