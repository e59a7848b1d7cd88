// korva registry watch: a line for each change, as two looks in a row show it.
#include "korva/errors.h"
#include "korva/interruption.h"
#include "korva/registry/key_access.h"
#include "korva/registry/registry_commands.h"
#include "korva/registry/registry_errors.h"
#include "korva/registry/tree_changes.h"
#include "korva/registry/value_json.h"
#include "korva/registry/value_text.h"
#include "korva/standard_streams.h"

namespace korva::tool {
namespace {

using platform::RegistryAccess;
using platform::RegistryKey;
using platform::RegistryResult;
namespace result = platform::registry_result;

/// The registry tells of values. That keys come and go shows when one looks.
constexpr int lookEveryMs = 1000;

class TreeWatcher {
public:
    explicit TreeWatcher(KeyPlace watched) : place(std::move(watched)) {}

    void wait() { waitUntilReady(watch.handle(), Direction::read, lookEveryMs); }

    /// What is there now. Who changes something meanwhile could hide a value from the look, so it is taken
    /// anew then; but not for ever, should somebody write all the time.
    [[nodiscard]] TreeState look() {
        TreeState state = lookOnce();
        for (int again = 0; again < 3 && watch.take(); ++again) {
            state = lookOnce();
        }
        return state;
    }

private:
    TreeState lookOnce() {
        TreeState state;
        // Armed first: a change that the look just misses signals.
        if (arm()) {
            visitTree(
                key, place,
                [&](const KeyPlace& at, const KeyContents& contents) { add(state, at, contents); },
                [](const KeyPlace&) {});
        }
        return state;
    }

    static void add(TreeState& state, const KeyPlace& at, const KeyContents& contents) {
        throwIfInterrupted();
        state[keyText(at)] = {contents.values.begin(), contents.values.end()};
    }

    /// False while there is no such key.
    bool arm() {
        watch.take();
        RegistryResult code = key ? watch.arm(key) : result::keyDeleted;
        if (code == result::keyDeleted) {
            key = {};
            code = openRoot(place).open(place.path, RegistryAccess::read, key);
            code = code == result::success ? watch.arm(key) : code;
        }
        if (code == result::notFound || code == result::keyDeleted) {
            return false;
        }
        throwIfRefused(code, fmt::format("watch the key '{}'", keyText(place)));
        return true;
    }

    const KeyPlace place;
    platform::RegistryWatch watch;
    RegistryKey key;  ///< Armed whenever `lookOnce` found it.
};

const char* wordFor(TreeChange::Kind kind) {
    switch (kind) {
        case TreeChange::Kind::createKey:
            return "created key";
        case TreeChange::Kind::deleteKey:
            return "deleted key";
        case TreeChange::Kind::setValue:
            return "set";
        case TreeChange::Kind::deleteValue:
            return "deleted";
    }
    return "";
}

bool isOfValue(const TreeChange& change) {
    return change.kind == TreeChange::Kind::setValue || change.kind == TreeChange::Kind::deleteValue;
}

std::string lineAsText(const TreeChange& change) {
    std::string line = fmt::format("{:<11}  {}", wordFor(change.kind), asOneLine(change.key));
    if (isOfValue(change)) {
        line += "  " + shownName(change.name);
    }
    if (change.kind == TreeChange::Kind::setValue) {
        line += fmt::format("  {}  {}", typeName(change.value.type), dataSummary(change.value));
    }
    return line + "\n";
}

std::string lineAsJson(const TreeChange& change) {
    Json json = {{"change", wordFor(change.kind)}, {"key", change.key}};
    if (change.kind == TreeChange::Kind::setValue) {
        json.update(valueJson(change.name, change.value));
    } else if (isOfValue(change)) {
        json["name"] = change.name;
    }
    return jsonLine(json);
}

/// Whole lines: a signal ends the command between two of them, also when nobody reads.
void print(const std::vector<TreeChange>& changes, bool json) {
    for (const TreeChange& change : changes) {
        waitUntilReady(platform::standardOutput(), Direction::write);
        printOutput(json ? lineAsJson(change) : lineAsText(change));
    }
}

[[noreturn]] void showChanges(const RegistryOptions& options) {
    const KeyPlace place = keyOfArgument(options.key);
    TreeWatcher watcher(place);
    TreeState known = watcher.look();
    printNotice(fmt::format("{} '{}'; Ctrl-C ends it", known.empty() ? "waiting for the key" : "watching",
                            keyText(place)));
    while (true) {
        watcher.wait();
        expectReaderOfOutput();
        TreeState now = watcher.look();
        print(changesBetween(known, now), options.json);
        known = std::move(now);
    }
}

}  // namespace

void runRegistryWatch(const RegistryOptions& options) {
    try {
        showChanges(options);
    } catch (const Interrupted& interrupted) {
        if (interrupted.signal != platform::keyboardInterruption) {
            throw;
        }
    }
}

}  // namespace korva::tool
