// What the full-screen view knows between two looks: the choice, held peaks, and how the load went.
#pragma once

#include <array>
#include <map>
#include <string>

#include "korva/monitor/decibels.h"
#include "korva/monitor/load_history.h"
#include "korva/monitor/picture.h"
#include "korva/monitor/refresh.h"

namespace korva::tool {

/// What a user can do.
enum class MonitorKey { up, down, nextMeters, meters1, meters2, meters3, meters4, quit, other };

class LiveModel {
public:
    /// Keeps the chosen instance while it lives; then the one that took its place in the list is.
    void take(Refresh refresh, std::chrono::steady_clock::time_point now);
    /// A key other than `quit`.
    void press(MonitorKey key);

    /// `notice` stands in the second line, if it isn't empty.
    [[nodiscard]] Picture picture(ScreenSize size, const std::string& title, const std::string& notice,
                                  bool unicode) const;
    [[nodiscard]] const Refresh& latest() const { return shown; }

private:
    struct Past {
        LoadHistory loads;
        std::array<PeakHold, meterSetCount> peaks;
    };

    void choose(std::size_t index);

    Refresh shown;
    std::map<std::string, Past> pasts;
    std::string chosen;  ///< Its name.
    std::size_t chosenIndex = 0;
    MeterSet meterSet = MeterSet::input;
};

}  // namespace korva::tool
