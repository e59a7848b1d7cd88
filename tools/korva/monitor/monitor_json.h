// What instances tell, as JSON: one line for each look. docs/monitor.md has the members.
#pragma once

#include <chrono>
#include <string>

#include "korva/json.h"
#include "korva/monitor/refresh.h"
#include "korva/monitor/requests.h"

namespace korva::tool {

[[nodiscard]] std::string refreshJson(const Refresh& refresh, std::chrono::system_clock::time_point time);

/// A time as "2026-11-22T06:15:00.123Z".
[[nodiscard]] std::string timeText(std::chrono::system_clock::time_point time);

/// A value as a request's answer shows it; null if it isn't there or of another type or size.
[[nodiscard]] Json answerJson(const InstanceView& view, std::string_view valueName);

/// Null for a text that isn't there or of another type.
[[nodiscard]] Json textOrNull(const Reading<std::string>& text);

/// One line, also for texts that are no UTF-8.
[[nodiscard]] std::string asLine(const Json& json);

}  // namespace korva::tool
