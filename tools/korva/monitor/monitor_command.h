// korva monitor: what live audio objects tell of themselves. All throw `ToolError` and `Interrupted`.
#pragma once

#include <optional>
#include <string>

#include "korva/monitor/refresh.h"

namespace korva::tool {

/// As the command line has them, the texts still to be checked.
struct MonitorOptions {
    bool once = false;
    bool json = false;
    bool stale = false;
    bool sweep = false;
    bool yes = false;
    int intervalMs = 100;
    std::string instance;
    std::string request;
};

/// Gives the exit code.
[[nodiscard]] int runMonitor(const MonitorOptions& options);

// Its parts.
class Screen;
/// False if the one instance that is watched has ended.
[[nodiscard]] bool watchOnScreen(const MonitorOptions& options, Screen& screen);
[[nodiscard]] int runRequest(const MonitorOptions& options);
void listStaleInstances(const MonitorOptions& options);
void sweepStaleInstances(const MonitorOptions& options);

/// The instance that the options name, if they do.
[[nodiscard]] std::optional<std::string> instanceOfOptions(const MonitorOptions& options);

/// All keys of instances. Throws where there can't be any.
[[nodiscard]] InstanceKeys expectInstances();

/// The next look. Throws where nothing can be seen.
[[nodiscard]] Refresh nextRefresh(InstanceWatcher& watcher);
/// The first one: throws as well if the instance that was asked for isn't live.
[[nodiscard]] Refresh firstRefresh(InstanceWatcher& watcher, const std::optional<std::string>& only);

/// Whether the one instance that is watched is there no more.
[[nodiscard]] bool hasEnded(const Refresh& refresh, const std::optional<std::string>& only);

}  // namespace korva::tool
