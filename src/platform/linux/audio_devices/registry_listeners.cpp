#include "audio_devices/registry_listeners.h"

#include <algorithm>
#include <array>
#include <mutex>
#include <span>
#include <utility>

#include "platform/thread.h"

namespace korva::platform::devices {

RegistryResult RegistryListeners::add(IUnknown& client) {
    Reference<IUnknown> reference = shareReference(client);
    const std::lock_guard guard(mutex);
    clients.reserve(clients.size() + 1);
    if (!hasThread) {
        if (const RegistryResult result = start(); result != registry_result::success) {
            return result;
        }
    }
    clients.push_back({++lastNumber, std::move(reference)});
    return registry_result::success;
}

// Armed before it is read: whatever comes after `add` is told.
RegistryResult RegistryListeners::start() {
    auto newWatch = std::make_unique<RegistryWatch>();
    RegistryResult result = newWatch->arm(key);
    if (result == registry_result::success) {
        result = remember();
    }
    if (result != registry_result::success) {
        return result;
    }
    auto share = std::make_unique<std::shared_ptr<RegistryListeners>>(shared_from_this());
    watch = std::move(newWatch);
    try {
        // Detached: it keeps what it needs, and the library loaded, until it has left.
        Thread(enterThread, share.get()).detach();
    } catch (...) {
        watch.reset();
        throw;
    }
    static_cast<void>(share.release());
    hasThread = true;
    return registry_result::success;
}

HRESULT RegistryListeners::remove(IUnknown& client) {
    Reference<IUnknown> removed;  // released last, when the lock is free
    std::unique_lock guard(mutex);
    const auto found =
        std::ranges::find(clients, &client, [](const Client& one) { return one.object.get(); });
    if (found == clients.end()) {
        return published::notFound;
    }
    const std::uint64_t number = found->number;
    removed = std::move(found->object);
    clients.erase(found);
    if (clients.empty()) {
        wake.signal();
    }
    if (isOnThread()) {
        if (running == number) {
            // Its own reference may be the last, and its method still has to return.
            leaving = std::move(removed);
        }
        return published::ok;
    }
    // Somebody who comes meanwhile keeps the thread.
    changed.wait(guard, [&] { return running != number && (!hasThread || !clients.empty()); });
    return published::ok;
}

void RegistryListeners::removeAll() {
    while (true) {
        Reference<IUnknown> client;
        {
            const std::lock_guard guard(mutex);
            if (clients.empty()) {
                return;
            }
            client = shareReference(*clients.front().object);
        }
        remove(*client);
    }
}

void RegistryListeners::enterThread(void* share) {
    const std::unique_ptr<std::shared_ptr<RegistryListeners>> own(
        static_cast<std::shared_ptr<RegistryListeners>*>(share));
    (*own)->run();
}

void RegistryListeners::run() {
    {
        const std::lock_guard guard(mutex);
        threadId = std::this_thread::get_id();
    }
    while (waitForChange()) {
        try {
            look();
        } catch (...) {
            // Without memory nobody is told now; the next change tells of this one as well.
        }
    }
}

// False when nobody is left: the thread is gone then, as far as others can see.
bool RegistryListeners::waitForChange() {
    const std::array handles{wake.handle(), watch->handle()};
    waitForHandles(handles, waitForever);
    wake.reset();
    {
        const std::lock_guard guard(mutex);
        if (clients.empty()) {
            watch.reset();
            hasThread = false;
            threadId = {};
            changed.notify_all();
            return false;
        }
    }
    // Armed again first, so that a change during the look isn't missed. A deleted key never signals again.
    if (watch->take()) {
        static_cast<void>(watch->arm(key));
    }
    return true;
}

std::vector<std::uint64_t> RegistryListeners::clientNumbers() {
    const std::lock_guard guard(mutex);
    std::vector<std::uint64_t> numbers(clients.size());
    std::ranges::transform(clients, numbers.begin(), &Client::number);
    return numbers;
}

void RegistryListeners::tellAll(const std::function<void(IUnknown&)>& tell) {
    // By numbers, without references of its own: when `remove` has returned, none is left.
    for (const std::uint64_t number : clientNumbers()) {
        if (IUnknown* const client = enter(number)) {
            tell(*client);
            leave();
        }
    }
}

IUnknown* RegistryListeners::enter(std::uint64_t number) {
    const std::lock_guard guard(mutex);
    const auto found = std::ranges::find(clients, number, &Client::number);
    if (found == clients.end()) {
        return nullptr;
    }
    running = number;
    return found->object.get();
}

void RegistryListeners::leave() {
    Reference<IUnknown> released;
    const std::lock_guard guard(mutex);
    running.reset();
    released = std::move(leaving);
    changed.notify_all();
}

}  // namespace korva::platform::devices
