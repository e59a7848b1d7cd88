#include "params/fx_store_watcher.h"

#include <system_error>
#include <utility>

#include "framework/describe_members.h"
#include "framework/weak_reference.h"
#include "params/key_watch.h"

namespace korva::params {

using framework::Dispatcher;
using framework::DispatcherUse;
using framework::Ref;
using framework::WeakRef;
using platform::RegistryKey;

// The thread has nothing of this object but a weak reference, taken anew for each publication: an object that
// is given up doesn't live on by its watch.
FxStoreWatcher::FxStoreWatcher(const std::string& path, std::int64_t delayMs) {
    auto publishing = [self = WeakRef<FxStoreWatcher>(*this)](const RegistryKey& key) {
        const Ref<FxStoreWatcher> watcher = self.lock();
        return watcher && watcher->publish(key);
    };
    const auto watch = std::make_shared<KeyWatch>(path, delayMs, stop, std::move(publishing));
    published.set(watch->lastKey());
    starting = postTask([self = WeakRef<FxStoreWatcher>(*this), watch] {
        if (const Ref<FxStoreWatcher> watcher = self.lock()) {
            watcher->start(watch);
        }
    });
}

// A thread takes longer to begin than all else here, and what changes until then isn't lost.
void FxStoreWatcher::start(const std::shared_ptr<KeyWatch>& watch) {
    try {
        thread = Dispatcher::start(framework::RootType::of<FxStoreWatcher>());
    } catch (const std::system_error&) {
        return;
    }
    thread->postAndForget([watch] { watch->run(); });
}

void FxStoreWatcher::describeMembers(framework::ClassInfo& info) {
    framework::describe(info, "published", &FxStoreWatcher::published);
}

// On the watch's thread. False, and nothing done, if the owner's has ended.
bool FxStoreWatcher::publish(const RegistryKey& key) {
    return runOnOwner([&] { publishHere(key); });
}

// The owner serves this call also while it waits for the thread's end, when listeners may be gone.
void FxStoreWatcher::publishHere(const RegistryKey& key) {
    if (closedCounter()->get() != 0) {
        return;
    }
    isPublishing = true;
    published.set(key);
    isPublishing = false;
}

void FxStoreWatcher::onClose() {
    starting = {};
    stop->signal();
    DispatcherUse ending = std::move(thread);
    if (isPublishing && ending) {
        // The thread waits for the call that brought us here: it can't be waited for, and ends itself.
        const Ref<Dispatcher> watching = ending.ref();
        watching->postAndForget([use = std::move(ending)]() mutable { use = DispatcherUse(); });
    }
    ending = DispatcherUse();
    ActiveObject::onClose();
}

}  // namespace korva::params
