// What a value and a listener take of memory. A byte is shown as a nanosecond, and held against one byte.
#include <benchmark/benchmark.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <utility>

#include "bench/framework/listeners.h"
#include "bench/support/counted_memory.h"
#include "framework/active_object.h"

namespace {

using namespace korva;
using framework::Observable;

/// An object with so many values.
template <std::size_t count>
class Owner final : public framework::ObjectClass<Owner<count>, framework::ActiveObject> {
public:
    Owner() : Owner(std::make_index_sequence<count>()) {}

    std::array<Observable<std::uint32_t>, count> values;

private:
    template <std::size_t... index>
    explicit Owner(std::index_sequence<index...>) : values{valueOf<index>(*this)...} {}

    template <std::size_t>
    static Observable<std::uint32_t> valueOf(Owner& owner) {
        return Observable<std::uint32_t>(owner);
    }
};

/// What an object with so many values has allocated, its own memory included, before anybody listens.
template <std::size_t count>
double bytesOfOwner() {
    const bench::CountedMemory memory;
    const auto owner = framework::create<Owner<count>>();
    return static_cast<double>(memory.liveBytes());
}

// Two owners that differ in nothing but the number of their values.
double bytesOfValue() {
    constexpr std::size_t more = 100;
    return (bytesOfOwner<1 + more>() - bytesOfOwner<1>()) / more;
}

// What the owner's tables grow by, the unused places of their last growth included.
double bytesOfSubscriber() {
    constexpr std::size_t count = 1000;
    std::array<bench::Listener, count> listeners{};
    const bench::CountedMemory memory;
    const auto owner = framework::create<Owner<1>>();
    const std::ptrdiff_t before = memory.liveBytes();
    for (bench::Listener& listener : listeners) {
        owner->values[0].subscribe(&listener, nullptr, &bench::hearFromObservable);
    }
    return static_cast<double>(memory.liveBytes() - before) / count;
}

void show(benchmark::State& state, double (*bytes)()) {
    for (auto _ : state) {
        state.SetIterationTime(bytes() * 1e-9);
    }
}

void registerBytes(const char* name, double (*bytes)()) {
    benchmark::RegisterBenchmark(name, show, bytes)->Iterations(1)->UseManualTime();
}

[[maybe_unused]] const bool registered = [] {
    registerBytes("bytes/value", bytesOfValue);
    registerBytes("bytes/subscriber", bytesOfSubscriber);
    registerBytes("bytes/one", [] { return 1.0; });
    return true;
}();

}  // namespace
