// The life of the framework in a process.
#pragma once

#include <cstdint>

#include "framework/dispatcher.h"

namespace korva::framework {

/// Keeps the framework alive for an object that a host creates and releases. The end of the last scope waits
/// for the dispatchers' threads, so that the host may unload the library. A scope ends on the thread that
/// began it.
///
/// Lock order: the scopes' mutex, then the registry's. The last scope of all holds the scopes' mutex while it
/// waits, so a dispatcher's thread neither begins nor ends a scope.
class FrameworkScope {
public:
    struct Options {
        std::int64_t timeoutMs = waitForever;  ///< For the joins of the last scope, unless it is external.
        bool requestStop = true;               ///< Whether the last scope asks the dispatchers to stop.
        /// The scope's thread is none of ours and gets no dispatcher: the last scope waits, without limit,
        /// until `liveThreadCount` is 0. Never ended on a dispatcher's thread, which would wait for itself.
        bool external = false;
        /// For the dispatcher that the calling thread gets, if it has none and the scope isn't external.
        Dispatcher::WakeCallback wakeCallback{};
    };

    explicit FrameworkScope(Options options);
    ~FrameworkScope();
    FrameworkScope(const FrameworkScope&) = delete;
    FrameworkScope& operator=(const FrameworkScope&) = delete;

    /// The dispatcher of the thread that began the scope; null if it is external.
    [[nodiscard]] Dispatcher* hostDispatcher() const noexcept { return host.get(); }

private:
    void joinAll() const;

    std::int64_t timeoutMs;
    bool requestStop;
    bool external;
    DispatcherUse host;
};

}  // namespace korva::framework
