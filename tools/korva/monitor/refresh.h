// Looking at all live instances again and again, and having them measure meanwhile.
#pragma once

#include <chrono>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "korva/monitor/instance_keys.h"
#include "korva/monitor/instance_view.h"
#include "korva/monitor/requests.h"

namespace korva::tool {

/// What one look found.
struct Refresh {
    platform::RegistryResult code = 0;  ///< Why nothing could be read, else 0.
    bool hasTelemetry = false;          ///< Whether objects can show themselves.
    std::vector<InstanceView> instances{};
    std::vector<InstanceKey> others{};     ///< Keys that aren't live ones.
    platform::RegistryResult askCode = 0;  ///< Why some instance couldn't be asked, else 0.
};

/// Metering is on in all instances that it saw, until it goes.
class InstanceWatcher {
public:
    using Time = std::chrono::steady_clock::time_point;

    /// Of all instances, or of one only.
    explicit InstanceWatcher(std::optional<std::string> onlyInstance = {});

    /// Reads what is there, which answers the questions of the last time, and asks anew: for levels each
    /// time, and once a second for the counters.  [blocks]
    [[nodiscard]] Refresh refresh(Time now);

private:
    struct Watched {
        explicit Watched(platform::RegistryKey writable) : key(writable), levels(writable) {}

        platform::RegistryKey key;
        LevelQuestions levels;
        std::optional<Time> lastCounters{};
        bool isSeen = true;  ///< In the refresh at hand.
    };

    void look(const InstanceKey& found, Refresh& refreshed, Time now);
    [[nodiscard]] platform::RegistryResult askAnew(const std::string& name, Time now);

    const std::optional<std::string> only;
    std::map<std::string, std::unique_ptr<Watched>> watched;
};

/// An endpoint's name; empty where the registry knows none.  [any, blocks]
[[nodiscard]] std::string endpointNameOf(const std::string& endpointId);

}  // namespace korva::tool
