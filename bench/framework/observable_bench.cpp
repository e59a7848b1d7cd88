// A change of a value that 0, 1 or 8 others listen to, beside signals of other libraries and a plain table of
// functions.
//
// Every set is a change. Each way to make one is a function that isn't inlined, and the listeners are in
// another source: what is measured is what a program pays that doesn't know who listens.
#include <benchmark/benchmark.h>
#include <sigc++/sigc++.h>

#include <array>
#include <boost/signals2/signal.hpp>
#include <cstdint>
#include <vector>

#include "bench/framework/listeners.h"
#include "bench/framework/qt_value.h"
#include "framework/active_object.h"

namespace {

using namespace korva;
using bench::Listener;

class Owner final : public framework::ObjectClass<Owner, framework::ActiveObject> {
public:
    framework::Observable<std::uint32_t> value{*this};
};

class Korva {
public:
    void connect(Listener& listener) {
        owner->value.subscribe(&listener, nullptr, &bench::hearFromObservable);
    }
    [[gnu::noinline]] void change(std::uint32_t value) { owner->value.set(value); }

private:
    framework::Ref<Owner> owner = framework::create<Owner>();
};

/// The least that does it: one value, compared with what was there, and functions called one after the other.
class Table {
public:
    void connect(Listener& listener) { entries.push_back({&bench::hearFromTable, &listener}); }
    [[gnu::noinline]] void change(std::uint32_t value) {
        const std::uint32_t before = current;
        if (value == before) {
            return;
        }
        current = value;
        for (const Entry& entry : entries) {
            entry.function(entry.context, before, value);
        }
    }

private:
    struct Entry {
        void (*function)(void* context, std::uint32_t before, std::uint32_t value);
        void* context;
    };

    std::uint32_t current = 0;
    std::vector<Entry> entries;
};

class Signals2 {
public:
    void connect(Listener& listener) {
        changed.connect([&listener](std::uint32_t value) { listener.hear(value); });
    }
    [[gnu::noinline]] void change(std::uint32_t value) { changed(value); }

private:
    boost::signals2::signal<void(std::uint32_t)> changed;
};

class Sigc {
public:
    void connect(Listener& listener) { changed.connect(sigc::mem_fun(listener, &Listener::hear)); }
    [[gnu::noinline]] void change(std::uint32_t value) { changed.emit(value); }

private:
    sigc::signal<void, std::uint32_t> changed;
};

class Qt5 {
public:
    void connect(Listener& listener) {
        QObject::connect(&object, &bench::QtValue::changed,
                         [&listener](quint32 value) { listener.hear(value); });
    }
    [[gnu::noinline]] void change(std::uint32_t value) { Q_EMIT object.changed(value); }

private:
    bench::QtValue object;
};

template <class Peer>
void change(benchmark::State& state) {
    std::array<Listener, 8> listeners{};
    const auto count = static_cast<std::size_t>(state.range(0));
    Peer peer;
    for (std::size_t i = 0; i < count; ++i) {
        peer.connect(listeners[i]);
    }
    std::uint32_t value = 0;
    for (auto _ : state) {
        value ^= 1;
        peer.change(value);
        benchmark::ClobberMemory();
    }
    for (std::size_t i = 0; i < count; ++i) {
        if (listeners[i].calls != static_cast<std::uint64_t>(state.iterations()) ||
            listeners[i].last != value) {
            state.SkipWithError("a listener missed a change");
        }
    }
}

template <class Peer>
void registerPeer(const char* name) {
    benchmark::RegisterBenchmark(name, change<Peer>)->Arg(0)->Arg(1)->Arg(8);
}

[[maybe_unused]] const bool registered = [] {
    registerPeer<Korva>("change/korva");
    registerPeer<Table>("change/table");
    registerPeer<Signals2>("change/signals2");
    registerPeer<Sigc>("change/sigc");
    registerPeer<Qt5>("change/qt");
    return true;
}();

}  // namespace
