#include "params/key_watch.h"

#include <utility>

#include "platform/deletion_notice.h"

namespace korva::params {
namespace {

using platform::RegistryAccess;
using platform::RegistryKey;
using platform::RegistryRoot;

/// Between two looks for a key that is missing.
constexpr std::int64_t lookMs = 1000;

}  // namespace

KeyWatch::KeyWatch(std::string watchedPath, std::int64_t pause,
                   std::shared_ptr<const platform::Event> stopSignal, Publish publishKeys)
    : path(std::move(watchedPath)),
      pauseMs(pause),
      stop(std::move(stopSignal)),
      publish(std::move(publishKeys)) {
    open();
}

void KeyWatch::run() {
    while (waitForChange() && waitForPause() && publishKey()) {
    }
}

// False when the watch is to stop.
bool KeyWatch::waitForChange() {
    // A deleted key that says nothing is found by a look; one that speaks needs none.
    const std::int64_t openLimitMs = platform::tellsOfKeyDeletion() ? platform::waitForever : lookMs;
    while (true) {
        // What came together with the key is a change as well.
        if (!isOpen() && open()) {
            return true;
        }
        const std::array handles{stop->handle(), changes.handle()};
        const int signalled = platform::waitForHandles(handles, isOpen() ? openLimitMs : lookMs);
        if (signalled == 0) {
            return false;
        }
        // A key may signal as it is closed, so a signal without a key says nothing.
        if (changes.take() && isOpen()) {
            return true;
        }
        if (isDeleted()) {
            release();
        }
    }
}

// Until a whole pause has gone by without a change. Armed before each pause, the key tells of whatever comes
// after: also of what whoever reads it later doesn't see. False when the watch is to stop, which has to show
// here as well: the pause of a key that is written to all the time never comes.
bool KeyWatch::waitForPause() {
    const std::array handles{stop->handle()};
    while (arm()) {
        if (platform::waitForHandles(handles, pauseMs) == 0) {
            return false;
        }
        if (!changes.take()) {
            return true;
        }
    }
    return true;
}

// A key that was deleted during the pause isn't given on. False when nobody is left to give it to.
bool KeyWatch::publishKey() {
    if (!isOpen()) {
        return true;
    }
    if (!publish(keys[slot])) {
        return false;
    }
    slot ^= 1U;
    return true;
}

// Both or none: the two handles of a deleted key share its one signal, and the one that isn't armed at the
// moment would be found out too late.
bool KeyWatch::open() {
    if (!root) {
        root = RegistryKey::root(RegistryRoot::localMachine);
    }
    for (RegistryKey& key : keys) {
        // The empty path would be that of the root.
        if (path.empty() || root.open(path, RegistryAccess::read, key) != 0) {
            release();
            return false;
        }
    }
    return arm();
}

// Not found out by arming the key once more: that takes back the signal of a change which comes just then.
bool KeyWatch::isDeleted() const {
    std::string name;
    return isOpen() && keys[slot].keyName(0, name) == platform::registry_result::keyDeleted;
}

// Asks for word of the next change. A key that can't be watched any more was deleted: it is looked for anew.
bool KeyWatch::arm() {
    if (isOpen() && changes.arm(keys[slot]) == 0) {
        return true;
    }
    release();
    return false;
}

}  // namespace korva::params
