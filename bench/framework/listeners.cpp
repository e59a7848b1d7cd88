#include "bench/framework/listeners.h"

namespace korva::bench {

namespace {

void note(Listener& listener, std::uint32_t value) noexcept {
    ++listener.calls;
    listener.last = value;
}

}  // namespace

void Listener::hear(std::uint32_t value) noexcept {
    note(*this, value);
}

void hearFromTable(void* listener, std::uint32_t, std::uint32_t value) noexcept {
    note(*static_cast<Listener*>(listener), value);
}

void hearFromObservable(void* listener, framework::ListenedTo&, framework::ActiveObject&,
                        const void* published, void*, const void*, framework::Reason) {
    note(*static_cast<Listener*>(listener), *static_cast<const std::uint32_t*>(published));
}

}  // namespace korva::bench
