// An effect core with the thread that owns it.
#pragma once

#include <cstdint>

#include "engine/effect_core.h"
#include "framework/dispatcher.h"
#include "framework/ref.h"
#include "platform/published/results.h"
#include "platform/published_call.h"
#include "rt/rt_processor.h"

namespace korva::apo {

/// Makes the core, uses it and ends it on a thread that is there for nothing else. Empty where the system had
/// no thread or memory for them. The framework's scope is somebody else's, who keeps it open meanwhile.
class CoreThread {
public:
    CoreThread() noexcept = default;
    /// `effectType` is an `EffectKind`'s number, or any other. Raises nothing: the result may be empty.
    [[nodiscard]] static CoreThread start(std::uint32_t effectType,
                                          const engine::Surroundings& surroundings) noexcept;

    CoreThread(CoreThread&& other) noexcept = default;
    CoreThread& operator=(CoreThread&& other) = delete;
    /// Closes the core and waits until its thread has ended.  [com, blocks]
    ~CoreThread();

    explicit operator bool() const noexcept { return static_cast<bool>(core); }

    /// Gives what `method(core)` gives, which is run on the core's thread; E_FAIL without a core. What the
    /// method raises becomes a result, too.  [com, blocks]
    template <class Method>
    HRESULT call(const Method& method) const noexcept {
        return platform::publishedCall([&] {
            HRESULT result = published::unspecifiedFailure;
            if (core) {
                worker->runSynchronously([&] { result = method(*core); });
            }
            return result;
        });
    }

    /// Whether the calling thread is the core's.
    [[nodiscard]] bool isCurrent() const noexcept { return worker && worker->isOwnThread(); }

    /// Null without a core.
    [[nodiscard]] rt::RtProcessor* realtime() const noexcept { return core ? &core->realtime() : nullptr; }

private:
    framework::DispatcherUse worker;
    framework::Held<engine::EffectCore> core;  // goes first: what its close posts is still run
};

}  // namespace korva::apo
