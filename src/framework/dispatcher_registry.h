// All dispatchers of the process.
#pragma once

#include <mutex>
#include <vector>

#include "framework/ref.h"
#include "platform/mutex.h"

namespace korva::framework {

class Dispatcher;

/// A list of dispatchers. Every dispatcher is in the process's one from its start until it was joined, or is
/// destroyed.  [any]
class DispatcherRegistry {
public:
    constexpr DispatcherRegistry() noexcept = default;

    void add(Dispatcher& dispatcher) noexcept;
    void remove(Dispatcher& dispatcher) noexcept;

    /// References to those that are alive.
    [[nodiscard]] std::vector<Ref<Dispatcher>> all();

private:
    platform::Mutex mutex;
    Dispatcher* first = nullptr;  // linked through the dispatchers themselves
};

/// That of the process. It has nothing to destroy: dispatchers may outlive the statics of a process that
/// ends.
[[nodiscard]] DispatcherRegistry& dispatcherRegistry() noexcept;

}  // namespace korva::framework
