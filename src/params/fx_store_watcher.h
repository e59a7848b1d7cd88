// Word of the changes of a set of properties.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "framework/active_object.h"
#include "platform/registry.h"
#include "platform/wait_handles.h"

namespace korva::params {

class KeyWatch;

/// Watches one key of the registry with all below it, on a thread of its own, and publishes an open handle of
/// the key whenever it changed and then stayed quiet. Each handle differs from the one before, so `published`
/// tells its listeners of every change; the key behind it is the same.
///
/// A key that doesn't exist yet, or was deleted, is looked for once a second, and published when it is there.
///
/// Closing ends the thread and waits for it, and serves the calls of others to the owner's thread meanwhile;
/// nothing is published any more from then on. Closed by a listener of `published`, it doesn't wait: the
/// thread ends when that listener is through.
class FxStoreWatcher final : public framework::ObjectClass<FxStoreWatcher, framework::ActiveObject> {
public:
    /// `path` is below HKEY_LOCAL_MACHINE; nothing is ever published of an empty one, which is no key's. A
    /// change is told of when none has followed for `delayMs` milliseconds. Changes count from here on; the
    /// key itself is published at once if there is one. The thread begins with the owner's next task;
    /// without one left in the system, nothing more is told of. Raises `std::system_error` where the system
    /// has no event left.
    FxStoreWatcher(const std::string& path, std::int64_t delayMs);

    static void describeMembers(framework::ClassInfo& info);

    /// An open key for reading, with a share of it: its number is no other key's as long as it stands here.
    framework::Observable<platform::RegistryKey> published{*this};

private:
    void onClose() override;

    void start(const std::shared_ptr<KeyWatch>& watch);
    bool publish(const platform::RegistryKey& key);
    void publishHere(const platform::RegistryKey& key);

    const std::shared_ptr<platform::Event> stop = std::make_shared<platform::Event>();  // the thread's, too
    bool isPublishing = false;
    framework::TaskHandle starting;
    framework::DispatcherUse thread;
};

}  // namespace korva::params
