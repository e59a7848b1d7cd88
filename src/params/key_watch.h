// What the thread of a store watcher does.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "platform/registry.h"
#include "platform/wait_handles.h"

namespace korva::params {

/// Waits for changes of one key with all below it, and gives on an open handle of the key when it has changed
/// and then stayed quiet. A key that is missing is looked for once a second, and given on when it has come.
///
/// The key is open twice, and the two handles are given on in turn: whoever compares a handle with the one
/// before sees that it is another one.
class KeyWatch {
public:
    /// Takes a key for those who want it; false if nobody is left, which ends the watch.
    using Publish = std::function<bool(const platform::RegistryKey&)>;

    /// Looks at changes from now on. `path` is below HKEY_LOCAL_MACHINE; an empty one is no key's. A key that
    /// is written to is given on when that has paused for `pauseMs` milliseconds. Raises `std::system_error`
    /// where the system has no event left.
    KeyWatch(std::string path, std::int64_t pauseMs, std::shared_ptr<const platform::Event> stop,
             Publish publish);

    /// The key that is given on after the next one; none as long as there is none.
    [[nodiscard]] const platform::RegistryKey& lastKey() const noexcept { return keys[slot ^ 1U]; }

    /// Watches until `stop` is signalled, or nobody is left.  [blocks]
    void run();

private:
    bool waitForChange();
    bool waitForPause();
    bool publishKey();

    [[nodiscard]] bool isOpen() const noexcept { return static_cast<bool>(keys[slot]); }
    bool open();
    [[nodiscard]] bool isDeleted() const;
    bool arm();
    void release() { keys = {}; }

    platform::RegistryKey root;  ///< None as long as there is no registry.
    const std::string path;
    const std::int64_t pauseMs;
    const std::shared_ptr<const platform::Event> stop;
    const Publish publish;

    platform::RegistryWatch changes;
    std::array<platform::RegistryKey, 2> keys;  ///< Both open, or none.
    std::size_t slot = 0;                       ///< Of the key that is given on next.
};

}  // namespace korva::params
