#include "framework/framework_scope.h"

#include <mutex>
#include <utility>
#include <vector>

#include "framework/dispatcher_registry.h"
#include "framework/wait_block.h"
#include "platform/mutex.h"

namespace korva::framework {

namespace {

constinit platform::Mutex scopesMutex;
std::uint32_t scopeCount = 0;  // under the mutex

void waitForAllThreads() {
    std::uint32_t live = liveThreadCount().get();
    while (live != 0) {
        liveThreadCount().wait(live);
    }
}

// The dispatcher that the thread has, unless somebody stopped it: it takes nothing any more.
DispatcherUse useOfThisThread(Dispatcher::WakeCallback wakeCallback) {
    Dispatcher* const present = Dispatcher::current();
    if (present != nullptr && present->currentState() != Dispatcher::stopping) {
        return DispatcherUse(Ref<Dispatcher>::share(present));
    }
    return Dispatcher::hostOnThisThread(std::move(wakeCallback));
}

}  // namespace

FrameworkScope::FrameworkScope(Options options)
    : timeoutMs(options.timeoutMs), requestStop(options.requestStop), external(options.external) {
    if (!external) {
        host = useOfThisThread(std::move(options.wakeCallback));
    }
    const std::lock_guard guard(scopesMutex);
    ++scopeCount;
}

FrameworkScope::~FrameworkScope() {
    const std::lock_guard guard(scopesMutex);
    if (--scopeCount == 0) {
        if (external) {
            waitForAllThreads();
        } else {
            joinAll();
        }
        freeUnusedWaitBlocks();
    }
}

void FrameworkScope::joinAll() const {
    const WaitLimit limit(timeoutMs);
    while (!limit.hasPassed()) {
        std::vector<Ref<Dispatcher>> all = dispatcherRegistry().all();
        std::erase_if(all, [](const Ref<Dispatcher>& dispatcher) {
            return dispatcher->isHosted() && !dispatcher->isOwnThread();
        });
        if (all.empty()) {
            return;
        }
        for (const Ref<Dispatcher>& dispatcher : all) {
            if (requestStop) {
                dispatcher->requestStop();
            }
        }
        for (const Ref<Dispatcher>& dispatcher : all) {
            dispatcher->join(limit.sliceMs(waitForever));
        }
    }
}

}  // namespace korva::framework
