#include "korva/monitor/monitor_command.h"

#include <algorithm>
#include <memory>
#include <utility>

#include "korva/errors.h"
#include "korva/interruption.h"
#include "korva/monitor/monitor_json.h"
#include "korva/monitor/screen.h"
#include "korva/monitor/table.h"
#include "korva/monitor/view_text.h"
#include "korva/registry/registry_errors.h"
#include "korva/standard_streams.h"
#include "services/instance_key.h"

namespace korva::tool {
namespace {

using Kind = InstanceKey::Kind;

constexpr int answerMs = 50;  ///< That an object may take for an answer.

void expectSight(platform::RegistryResult code, bool hasTelemetry) {
    throwIfRefused(code, "look for instances");
    if (!hasTelemetry) {
        fail(
            "no instance can show itself: the registry '{}' has no key 'HKLM\\{}'; make it with korva registry "
            "create 'HKLM\\{}', then start the sound anew",
            platform::registryPlace(), services::instance_place::base, services::instance_place::base);
    }
}

[[noreturn]] void failOnMissing(const std::string& name, const std::vector<InstanceKey>& others) {
    const auto found = std::ranges::find_if(
        others, [&](const InstanceKey& key) { return instanceNameOf(key.name) == name; });
    if (found == others.end()) {
        fail("there is no instance {}; korva monitor --once lists those that live", name);
    }
    if (found->kind == Kind::stale) {
        fail("the instance {} is no more: its process died and left the key; see korva monitor --stale",
             name);
    }
    throwIfRefused(found->code, fmt::format("read the instance {}", name));
    fail("there is no instance {}", name);
}

void print(const std::vector<std::string>& lines) {
    std::string text;
    for (const std::string& line : lines) {
        text += line + "\n";
    }
    printOutput(text);
}

void printDetails(const InstanceView& view) {
    std::string text = "\n";
    for (const auto& [label, value] : detailsOf(view)) {
        text += fmt::format("{:<13}  {}\n", label, value);
    }
    printOutput(text + "\n");
    print(levelTableOf(view));
}

/// What isn't in the table, on standard error.
void tellOfOthers(const Refresh& refresh) {
    for (const InstanceKey& key : refresh.others) {
        if (key.kind != Kind::stale) {
            printNotice(fmt::format("the instance {} is skipped: {}", key.name, registryMessage(key.code)));
        }
    }
    const auto stale = std::ranges::count(refresh.others, Kind::stale, &InstanceKey::kind);
    if (stale > 0) {
        printNotice(fmt::format("{} left-over key{} of processes that died; see korva monitor --stale", stale,
                                stale == 1 ? "" : "s"));
    }
}

void tellOfFailedQuestions(const Refresh& refresh) {
    if (refresh.askCode != 0) {
        printNotice(fmt::format("levels and counters may be old, since instances can't be asked: {}",
                                registryMessage(refresh.askCode)));
    }
}

/// The first question turns metering on, the second one asks for what was measured, and then it can be read.
Refresh measuredRefresh(InstanceWatcher& watcher, const MonitorOptions& options) {
    const std::optional<std::string> only = instanceOfOptions(options);
    Refresh refresh = firstRefresh(watcher, only);
    for (const int waitMs : {options.intervalMs, answerMs}) {
        if (!refresh.instances.empty()) {
            pauseFor(waitMs);
            refresh = firstRefresh(watcher, only);
        }
    }
    return refresh;
}

void printOnce(const MonitorOptions& options) {
    InstanceWatcher watcher(instanceOfOptions(options));
    const Refresh refresh = measuredRefresh(watcher, options);
    if (options.json) {
        printOutput(refreshJson(refresh, std::chrono::system_clock::now()));
    } else if (refresh.instances.empty()) {
        printOutput("no live instance\n");
    } else {
        print(tableOf(refresh.instances, anyWidth));
        if (!options.instance.empty()) {
            printDetails(refresh.instances.front());
        }
    }
    tellOfOthers(refresh);
    tellOfFailedQuestions(refresh);
}

void tellOfEnd(const std::string& name) {
    printNotice(fmt::format("the instance {} has ended", name));
}

void printJsonUntilStopped(const MonitorOptions& options) {
    const std::optional<std::string> only = instanceOfOptions(options);
    InstanceWatcher watcher(only);
    Refresh refresh = firstRefresh(watcher, only);
    tellOfFailedQuestions(refresh);
    do {
        waitUntilReady(platform::standardOutput(), Direction::write);
        printOutput(refreshJson(refresh, std::chrono::system_clock::now()));
        pauseFor(options.intervalMs);
        expectReaderOfOutput();
        refresh = nextRefresh(watcher);
    } while (!hasEnded(refresh, only));
    tellOfEnd(*only);
}

/// The terminal is as before when it comes back.
void watchOnTerminal(const MonitorOptions& options, std::unique_ptr<Screen> screen) {
    const bool hasQuit = watchOnScreen(options, *screen);
    screen.reset();
    if (!hasQuit) {
        tellOfEnd(instanceOfOptions(options).value_or(""));
    }
}

/// Ctrl-C is how one ends it.
template <class Function>
void untilCtrlC(const Function& function) {
    try {
        function();
    } catch (const Interrupted& interrupted) {
        if (interrupted.signal != platform::keyboardInterruption) {
            throw;
        }
    }
}

void watchOrPrint(const MonitorOptions& options) {
    if (options.json) {
        untilCtrlC([&] { printJsonUntilStopped(options); });
        return;
    }
    // Before the screen is taken: what can't be shown is told on the one that stays.
    static_cast<void>(expectInstances());
    if (std::unique_ptr<Screen> screen = Screen::open()) {
        untilCtrlC([&] { watchOnTerminal(options, std::move(screen)); });
    } else {
        printOnce(options);
    }
}

}  // namespace

std::optional<std::string> instanceOfOptions(const MonitorOptions& options) {
    if (options.instance.empty()) {
        return std::nullopt;
    }
    std::optional<std::string> name = instanceNameOf(options.instance);
    if (!name) {
        fail("--instance takes a GUID such as {{6dcc1ac8-4a3c-4a98-a3a7-f967127d5763}}, not '{}'",
             options.instance);
    }
    return name;
}

InstanceKeys expectInstances() {
    InstanceKeys found = listInstances();
    expectSight(found.code, found.hasTelemetry);
    return found;
}

Refresh nextRefresh(InstanceWatcher& watcher) {
    throwIfInterrupted();
    Refresh refresh = watcher.refresh(std::chrono::steady_clock::now());
    expectSight(refresh.code, refresh.hasTelemetry);
    return refresh;
}

Refresh firstRefresh(InstanceWatcher& watcher, const std::optional<std::string>& only) {
    Refresh refresh = nextRefresh(watcher);
    if (only && refresh.instances.empty()) {
        failOnMissing(*only, refresh.others);
    }
    return refresh;
}

bool hasEnded(const Refresh& refresh, const std::optional<std::string>& only) {
    return only && refresh.instances.empty();
}

int runMonitor(const MonitorOptions& options) {
    if (options.stale) {
        listStaleInstances(options);
    } else if (options.sweep) {
        sweepStaleInstances(options);
    } else if (!options.request.empty()) {
        return runRequest(options);
    } else if (options.once) {
        printOnce(options);
    } else {
        watchOrPrint(options);
    }
    return 0;
}

}  // namespace korva::tool
