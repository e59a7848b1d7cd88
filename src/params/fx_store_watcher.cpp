#include "params/fx_store_watcher.h"

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
    auto watch = std::make_shared<KeyWatch>(path, delayMs, stop, std::move(publishing));
    RegistryKey first;
    if (!path.empty() && RegistryKey::root(platform::RegistryRoot::localMachine)
                                 .open(path, platform::RegistryAccess::read, first) == 0) {
        published.set(first);
    }
    thread = Dispatcher::start(framework::RootType::of<FxStoreWatcher>());
    thread->postAndForget([watch = std::move(watch)] { watch->run(); });
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
