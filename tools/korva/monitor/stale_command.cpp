// korva monitor --stale and --sweep: the keys of processes that died.
#include <array>
#include <string_view>

#include "korva/errors.h"
#include "korva/interruption.h"
#include "korva/monitor/cell_text.h"
#include "korva/monitor/monitor_command.h"
#include "korva/monitor/monitor_json.h"
#include "korva/monitor/view_text.h"
#include "korva/registry/registry_errors.h"
#include "korva/standard_streams.h"
#include "platform/input_stream.h"

namespace korva::tool {
namespace {

using Names = std::vector<std::string>;

/// The left-over keys, or the one of them that the options name.
Names staleNames(const MonitorOptions& options) {
    const std::optional<std::string> only = instanceOfOptions(options);
    Names names;
    for (const InstanceKey& key : expectInstances().keys) {
        if (key.kind == InstanceKey::Kind::stale && (!only || instanceNameOf(key.name) == only)) {
            names.push_back(key.name);
        }
    }
    return names;
}

/// What the dead one told last. Only its name, if that can't be read.
InstanceView viewOf(const std::string& name) {
    platform::RegistryKey key;
    InstanceView view;
    view.name = name;
    if (openInstance(name, platform::RegistryAccess::read, key) == 0 && readInstance(key, name, view) == 0) {
        view.endpointName = endpointNameOf(view.endpointId.value.value_or(""));
    }
    return view;
}

void expectAgreement(std::size_t count) {
    if (!isTerminal(stdin) || !isTerminal(stderr)) {
        fail("--sweep asks before it removes {} left-over key{}; without a terminal it needs --yes", count,
             count == 1 ? "" : "s");
    }
}

/// The first word of a line from the terminal.
bool agrees(std::size_t count) {
    expectAgreement(count);
    const std::string question =
        fmt::format("Remove {} left-over key{}? [y/N] ", count, count == 1 ? "" : "s");
    static_cast<void>(platform::writeText(stderr, question));
    platform::InputStream input;
    std::array<char, 256> line{};
    const platform::InputRead read = input.read(line);
    if (read.isInterrupted) {
        throwIfInterrupted();
    }
    const std::string_view answer(line.data(), read.byteCount);
    return answer == "y\n" || answer == "Y\n" || answer == "yes\n" || answer == "y\r\n" ||
           answer == "Y\r\n" || answer == "yes\r\n";
}

const char* keptText(Removal removal) {
    switch (removal) {
        case Removal::isLive:
            return "kept {}: it is live\n";
        case Removal::isLink:
            return "kept {}: it is a link to another key\n";
        case Removal::removed:
            return "removed {}\n";
        case Removal::gone:
        case Removal::failed:
            break;
    }
    return "{} was gone already\n";
}

/// One after the other, so that what was removed is told even if another one can't be.
void removeAll(const Names& names, bool json) {
    Json removed = Json::array();
    platform::RegistryResult failure = 0;
    for (const std::string& name : names) {
        throwIfInterrupted();
        platform::RegistryResult code = 0;
        const Removal removal = removeStaleInstance(name, code);
        if (removal == Removal::failed) {
            failure = code;
        } else if (!json) {
            printOutput(fmt::format(fmt::runtime(keptText(removal)), name));
        } else if (removal == Removal::removed) {
            removed.push_back(name);
        }
    }
    if (json) {
        printOutput(asLine({{"removed", std::move(removed)}}));
    }
    throwIfRefused(failure, "remove a left-over key");
}

}  // namespace

void listStaleInstances(const MonitorOptions& options) {
    const Names names = staleNames(options);
    Json stale = Json::array();
    std::string text;
    for (const std::string& name : names) {
        const InstanceView view = viewOf(name);
        stale.push_back({{"instance", name},
                         {"effect", textOrNull(view.effect)},
                         {"endpoint", textOrNull(view.endpointId)}});
        text += fmt::format("{}  {:<6}  {}\n", name, effectText(view), endpointText(view));
    }
    if (options.json) {
        printOutput(asLine({{"stale", std::move(stale)}}));
    } else {
        printOutput(text.empty() ? "no left-over key\n" : text);
    }
}

void sweepStaleInstances(const MonitorOptions& options) {
    const Names names = staleNames(options);
    if (names.empty()) {
        printOutput(options.json ? asLine({{"removed", Json::array()}}) : "no left-over key\n");
    } else if (options.yes || agrees(names.size())) {
        removeAll(names, options.json);
    } else {
        printOutput(options.json ? asLine({{"removed", Json::array()}}) : "nothing removed\n");
    }
}

}  // namespace korva::tool
