// The thread that looks for changes of watched keys.
#pragma once

#include <cstdint>
#include <vector>

#include "embedded_registry/bell.h"
#include "embedded_registry/reader.h"
#include "embedded_registry/watch_signal.h"
#include "platform/thread.h"

namespace korva::platform::embedded {

/// Signals watches when the sequence number of a key that they are armed for is another one. Its thread runs
/// from the first arming on until no watch is left. While nothing is armed it sleeps without end; else it
/// looks when the bell is rung, and four times a second for one who was killed before ringing.  [any]
class Listener {
public:
    Listener(Reader& of, Bell& rung) : reader(of), bell(rung) {}
    Listener(const Listener&) = delete;
    Listener& operator=(const Listener&) = delete;

    /// 1018 if the key is deleted. A key that is armed already stays so, and what has changed since is told.
    /// `watch` must be forgotten before it ends. Throws `Failure`, and `std::system_error` if the system has
    /// no thread.  [any, blocks]
    [[nodiscard]] RegistryResult arm(WatchSignal& watch, KeyId key);

    /// Disarms all of the watch, which is signalled no more. The last one waits for the end of the thread.
    /// [any, blocks]
    void forget(const WatchSignal& watch);

private:
    struct Armed {
        WatchSignal* watch;
        KeyId key;
        std::int64_t sequence;  ///< What it was when the watch was armed.
    };

    void know(const WatchSignal& watch);
    void endThread();
    static void run(void* self);
    void listen();
    void look();
    [[nodiscard]] bool hasChanged(const Armed& one);

    Reader& reader;
    Bell& bell;

    // Taken before `mutex`, and held while the thread begins and ends.
    Mutex threadMutex;
    Thread thread;
    std::vector<const WatchSignal*> watches;  ///< Those that keep the thread.

    Mutex mutex;
    ConditionVariable wakeUp;
    std::vector<Armed> armed;
    bool isEnding = false;
};

}  // namespace korva::platform::embedded
