// A store watcher with somebody who listens to it.
#pragma once

#include <atomic>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "framework/dispatcher.h"
#include "framework/ref.h"
#include "params/fx_store_watcher.h"

namespace korva::test {

/// A watcher on a thread of its own, closed with this object at the latest. Each publication is noted, and
/// told to `onPublished` on that thread.
class WatcherHost {
public:
    using OnPublished = std::function<void(const platform::RegistryKey&)>;

    WatcherHost(const std::string& path, std::int64_t delayMs, OnPublished tell = {})
        : onPublished(std::move(tell)) {
        onOwner([&] {
            watcher = framework::Held<params::FxStoreWatcher>::first(
                framework::create<params::FxStoreWatcher>(path, delayMs));
            watcher->published.subscribe(this, nullptr, &after);
        });
    }
    ~WatcherHost() { close(); }
    WatcherHost(const WatcherHost&) = delete;
    WatcherHost& operator=(const WatcherHost&) = delete;

    /// Drops the watcher on its owner's thread.
    void close() {
        onOwner([&] {
            if (watcher) {
                watcher->published.unsubscribe(this, nullptr, &after);
            }
            watcher = nullptr;
        });
    }

    template <class Callable>
    void onOwner(const Callable& callable) {
        owner->runSynchronously(callable);
    }

    [[nodiscard]] int publications() const noexcept { return count.load(); }

    /// Of each publication since the construction.
    [[nodiscard]] std::vector<platform::RegistryKey> keys() {
        std::vector<platform::RegistryKey> copy;
        onOwner([&] { copy = published; });
        return copy;
    }

    framework::DispatcherUse owner = framework::Dispatcher::start();
    framework::Held<params::FxStoreWatcher> watcher;  ///< The owner's thread only.

private:
    static void after(void* context, framework::ListenedTo&, framework::ActiveObject&, const void* value,
                      void*, const void*, framework::Reason) {
        auto& self = *static_cast<WatcherHost*>(context);
        self.published.push_back(*static_cast<const platform::RegistryKey*>(value));
        if (self.onPublished) {
            self.onPublished(self.published.back());
        }
        ++self.count;
    }

    OnPublished onPublished;
    std::vector<platform::RegistryKey> published;  // the owner's thread only
    std::atomic<int> count{0};
};

}  // namespace korva::test
