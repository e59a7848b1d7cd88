// korva monitor on a terminal.
#include <fmt/core.h>

#include <algorithm>
#include <chrono>

#include "korva/errors.h"
#include "korva/monitor/monitor_command.h"
#include "korva/monitor/screen.h"
#include "korva/registry/registry_errors.h"

namespace korva::tool {
namespace {

using Clock = std::chrono::steady_clock;
using Kind = InstanceKey::Kind;

std::string titleOf(const Refresh& refresh, int intervalMs) {
    const std::size_t count = refresh.instances.size();
    return fmt::format("korva monitor   {} instance{}   every {} ms", count, count == 1 ? "" : "s",
                       intervalMs);
}

void addCount(std::string& notice, const Refresh& refresh, Kind kind, const char* words) {
    const auto count = std::ranges::count(refresh.others, kind, &InstanceKey::kind);
    if (count > 0) {
        notice += fmt::format("{}{} {}", notice.empty() ? "" : "; ", count, words);
    }
}

std::string noticeOf(const Refresh& refresh) {
    std::string notice;
    if (refresh.askCode != 0) {
        notice = "levels may be old, can't ask: " + registryMessage(refresh.askCode);
    }
    addCount(notice, refresh, Kind::stale, "left over, see --stale");
    addCount(notice, refresh, Kind::link, "skipped: a link to another key");
    addCount(notice, refresh, Kind::unreadable, "can't be read");
    return notice;
}

/// The keys until the next look is due. False once the user has enough.
bool handleKeys(Screen& screen, LiveModel& model, int intervalMs, Clock::time_point nextLook) {
    while (true) {
        const Refresh& latest = model.latest();
        screen.show(
            model.picture(screen.size(), titleOf(latest, intervalMs), noticeOf(latest), screen.hasUnicode()));
        const auto rest = std::chrono::ceil<std::chrono::milliseconds>(nextLook - Clock::now()).count();
        if (rest <= 0) {
            return true;
        }
        const std::optional<MonitorKey> key = screen.waitForKey(static_cast<int>(rest));
        if (key == MonitorKey::quit) {
            return false;
        }
        model.press(key.value_or(MonitorKey::other));
    }
}

}  // namespace

bool watchOnScreen(const MonitorOptions& options, Screen& screen) {
    const std::optional<std::string> only = instanceOfOptions(options);
    InstanceWatcher watcher(only);
    LiveModel model;
    Clock::time_point nextLook = Clock::now();
    for (Refresh refresh = firstRefresh(watcher, only); !hasEnded(refresh, only);
         refresh = nextRefresh(watcher)) {
        model.take(std::move(refresh), Clock::now());
        nextLook = std::max(nextLook + std::chrono::milliseconds(options.intervalMs), Clock::now());
        if (!handleKeys(screen, model, options.intervalMs, nextLook)) {
            return true;
        }
    }
    return false;
}

}  // namespace korva::tool
