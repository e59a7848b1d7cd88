#include "embedded_registry/listener.h"

#include <algorithm>
#include <mutex>

#include "embedded_registry/failure.h"

namespace korva::platform::embedded {
namespace {

constexpr std::int64_t slowLookMs = 250;
constexpr std::int64_t dayMs = 86'400'000;

}  // namespace

RegistryResult Listener::arm(WatchSignal& watch, KeyId key) {
    know(watch);
    const std::lock_guard guard(mutex);
    // Read under the mutex: a change after this rings a bell that the thread finds the key armed at.
    const auto sequence = reader.sequence(key);
    if (!sequence) {
        return registry_result::keyDeleted;
    }
    const auto same = std::find_if(armed.begin(), armed.end(),
                                   [&](const Armed& one) { return one.watch == &watch && one.key == key; });
    if (same == armed.end()) {
        armed.push_back({&watch, key, *sequence});
        wakeUp.notifyOne();
    } else if (same->sequence != *sequence) {
        // The thread was about to tell of a change since the last arming, and would find none now.
        same->sequence = *sequence;
        watch.signal();
    }
    return registry_result::success;
}

void Listener::know(const WatchSignal& watch) {
    const std::lock_guard guard(threadMutex);
    if (std::find(watches.begin(), watches.end(), &watch) != watches.end()) {
        return;
    }
    watches.reserve(watches.size() + 1);
    if (!thread.joinable()) {
        thread = Thread(&Listener::run, this);
    }
    watches.push_back(&watch);
}

void Listener::forget(const WatchSignal& watch) {
    const std::lock_guard guard(threadMutex);
    {
        const std::lock_guard armedGuard(mutex);
        std::erase_if(armed, [&](const Armed& one) { return one.watch == &watch; });
    }
    if (std::erase(watches, &watch) > 0 && watches.empty()) {
        endThread();
    }
}

void Listener::endThread() {
    {
        const std::lock_guard guard(mutex);
        isEnding = true;
        wakeUp.notifyOne();
    }
    bell.ring();
    thread.join();
    isEnding = false;
}

void Listener::run(void* self) {
    static_cast<Listener*>(self)->listen();
}

void Listener::listen() {
    std::unique_lock guard(mutex);
    while (!isEnding) {
        if (armed.empty()) {
            wakeUp.waitFor(guard, dayMs);
            continue;
        }
        // Counted before the look: a change that it misses rings afterwards.
        const std::uint32_t count = bell.count();
        look();
        if (!armed.empty()) {
            guard.unlock();
            bell.waitWhile(count, slowLookMs);
            guard.lock();
        }
    }
}

void Listener::look() {
    std::erase_if(armed, [this](const Armed& one) {
        const bool changed = hasChanged(one);
        if (changed) {
            one.watch->signal();
        }
        return changed;
    });
}

bool Listener::hasChanged(const Armed& one) {
    try {
        return reader.sequence(one.key) != one.sequence;
    } catch (const Failure&) {
        // The file can't be read now. The next look may find it well.
        return false;
    }
}

}  // namespace korva::platform::embedded
