// A library that uses the framework as an object of a host does, for a test that unloads it.
#include "framework/active_object.h"
#include "framework/framework_scope.h"
#include "framework/wiring.h"

namespace korva::test {
namespace {

using namespace framework;

class Adder final : public ObjectClass<Adder, ActiveObject>, public Wiring<Adder> {
public:
    Adder() {
        derive(sum, from(a, b), [](std::uint32_t one, std::uint32_t other) { return one + other; });
    }

    Observable<std::uint32_t> a{*this};
    Observable<std::uint32_t> b{*this};
    Observable<std::uint32_t> sum{*this};
};

}  // namespace

extern "C" {

#pragma GCC visibility push(default)

/// Adds on a thread of its own, which has ended when this returns. The calling thread has waited in the
/// library's code, and been numbered by it.
std::uint32_t addOnAnotherThread(std::uint32_t a, std::uint32_t b) {
    const FrameworkScope scope({.external = true});
    const DispatcherUse worker = Dispatcher::start(RootType::of<Adder>());
    Ref<Adder> adder;
    worker->runSynchronously([&] { adder = create<Adder>(); });
    adder->a.set(a);
    adder->postDelayed(1, [&adder, b] { adder->b.set(b); }).waitUntilDone();
    return adder->sum.read();
}

#pragma GCC visibility pop

}  // extern "C"

}  // namespace korva::test
