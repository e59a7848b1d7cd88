#include "korva/process/stream_events.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <iterator>
#include <string_view>
#include <utility>

#include "korva/errors.h"
#include "korva/preset/preset_file.h"

namespace korva::tool {
namespace {

constexpr double maxSeconds = 1e9;  // frames of it fit into 64 bits at any rate
constexpr double wholeTolerance = 1e-15;

std::optional<double> numberIn(std::string_view text) {
    double number = 0;
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, number);
    return error == std::errc() && stop == end && std::isfinite(number) ? std::optional(number)
                                                                        : std::nullopt;
}

/// The two sides of the first '='.
struct TimedText {
    double seconds;
    std::string text;
};

TimedText parseTimed(std::string_view option, std::string_view form, const std::string& argument) {
    const std::size_t split = argument.find('=');
    const std::optional<double> seconds =
        split == std::string::npos ? std::nullopt : numberIn(std::string_view(argument).substr(0, split));
    if (!seconds || *seconds < 0 || *seconds > maxSeconds) {
        fail("{} takes {}, with seconds from 0 on, not '{}'", option, form, argument);
    }
    return {*seconds, argument.substr(split + 1)};
}

StreamEvent presetEvent(const std::string& argument) {
    const TimedText timed = parseTimed("--change", "SECONDS=FILE", argument);
    return {timed.seconds, PresetChange{timed.text, presetOfFile(timed.text)}};
}

StreamEvent volumeEvent(const std::string& argument) {
    const TimedText timed = parseTimed("--volume", "SECONDS=SCALAR", argument);
    const std::optional<double> scalar = numberIn(timed.text);
    if (!scalar || *scalar < 0 || *scalar > 1) {
        fail("--volume takes SECONDS=SCALAR, with a scalar from 0 to 1, not '{}'", argument);
    }
    return {timed.seconds, VolumeChange{static_cast<float>(*scalar)}};
}

}  // namespace

std::uint64_t StreamEvent::frame(std::uint32_t sampleRate) const noexcept {
    const double frames = seconds * sampleRate;
    const double nearest = std::round(frames);
    // Most decimal fractions are no binary ones: 0.07 s at 48000 Hz is a hair past its frame.
    const bool isWhole = std::abs(frames - nearest) <= nearest * wholeTolerance;
    return static_cast<std::uint64_t>(isWhole ? nearest : std::ceil(frames));
}

std::vector<StreamEvent> readStreamEvents(const std::vector<std::string>& changes,
                                          const std::vector<std::string>& volumes) {
    std::vector<StreamEvent> events;
    std::ranges::transform(changes, std::back_inserter(events), presetEvent);
    std::ranges::transform(volumes, std::back_inserter(events), volumeEvent);
    std::ranges::stable_sort(events, {}, &StreamEvent::seconds);
    return events;
}

void failAsTooLate(const StreamEvent& event) {
    fail("a change at {} s comes too late: no buffer begins there or later", event.seconds);
}

}  // namespace korva::tool
