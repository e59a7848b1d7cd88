#include "apo/core_thread.h"

namespace korva::apo {

using engine::EffectCore;
using framework::Held;

CoreThread CoreThread::start(std::uint32_t effectType, const engine::Surroundings& surroundings) noexcept {
    try {
        CoreThread started;
        started.worker = framework::Dispatcher::start(framework::RootType::of<EffectCore>());
        started.worker->runSynchronously([&] {
            started.core = Held<EffectCore>::first(framework::create<EffectCore>(effectType, surroundings));
        });
        return started;
    } catch (...) {
        return {};
    }
}

// On its own thread, where nothing has to be queued for it: an end must not depend on memory.
CoreThread::~CoreThread() {
    call([this](EffectCore& object) {
        object.close();
        core = nullptr;
        return published::ok;
    });
}

}  // namespace korva::apo
