// A call to another thread that waits for its end, beside bare futexes and other libraries' ways to do it.
//
// What counts is the time that passes, not the processor time: the threads sleep. Where the target is to be
// asleep, the caller waits before each call until the kernel says that it is; the call alone is measured.
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QMetaObject>
#include <QtCore/QObject>
#include <QtCore/QThread>
#include <array>
#include <boost/asio/executor_work_guard.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/post.hpp>
#include <chrono>
#include <cstdint>
#include <exception>
#include <future>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>

#include "bench/framework/futex_ping_pong.h"
#include "bench/support/median.h"
#include "bench/support/processors.h"
#include "bench/support/thread_state.h"
#include "framework/dispatcher.h"

namespace {

using namespace korva;
using bench::Place;

// Each has a thread that is called, and counts the calls there.

class Dispatched {
public:
    Dispatched() {
        dispatcher->runSynchronously([this] { target = gettid(); });
    }
    void call() {
        dispatcher->runSynchronously([this] { ++counted; });
    }
    [[nodiscard]] pid_t targetThread() const { return target; }
    [[nodiscard]] std::uint64_t callsMade() const { return counted; }

private:
    framework::DispatcherUse dispatcher = framework::Dispatcher::start();
    pid_t target = 0;
    std::uint64_t counted = 0;
};

class AsioPosted {
public:
    AsioPosted() {
        run([this] { target = gettid(); });
    }
    ~AsioPosted() {
        work.reset();
        thread.join();
    }
    AsioPosted(const AsioPosted&) = delete;
    AsioPosted& operator=(const AsioPosted&) = delete;

    void call() {
        run([this] { ++counted; });
    }
    [[nodiscard]] pid_t targetThread() const { return target; }
    [[nodiscard]] std::uint64_t callsMade() const { return counted; }

private:
    template <class Function>
    void run(const Function& function) {
        std::promise<void> done;
        boost::asio::post(context, [&] {
            function();
            done.set_value();
        });
        done.get_future().wait();
    }

    boost::asio::io_context context{1};  // the number of its threads
    boost::asio::executor_work_guard<boost::asio::io_context::executor_type> work = make_work_guard(context);
    std::thread thread{[this] { context.run(); }};
    pid_t target = 0;
    std::uint64_t counted = 0;
};

// An event loop needs an application, also one of another thread.
void haveQtApplication() {
    static int argumentCount = 1;
    static std::string name = "bench_framework";
    static std::array<char*, 2> arguments{name.data(), nullptr};
    static const QCoreApplication application(argumentCount, arguments.data());
}

class QtInvoked {
public:
    QtInvoked() {
        haveQtApplication();
        object.moveToThread(&thread);
        thread.start();
        run([this] { target = gettid(); });
    }
    ~QtInvoked() {
        thread.quit();
        thread.wait();
    }
    QtInvoked(const QtInvoked&) = delete;
    QtInvoked& operator=(const QtInvoked&) = delete;

    void call() {
        run([this] { ++counted; });
    }
    [[nodiscard]] pid_t targetThread() const { return target; }
    [[nodiscard]] std::uint64_t callsMade() const { return counted; }

private:
    template <class Function>
    void run(const Function& function) {
        if (!QMetaObject::invokeMethod(&object, function, Qt::BlockingQueuedConnection)) {
            throw std::runtime_error("Qt doesn't call");
        }
    }

    QThread thread;
    QObject object;
    pid_t target = 0;
    std::uint64_t counted = 0;
};

double secondsSince(std::chrono::steady_clock::time_point start) {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

template <class Peer>
void checkCalls(benchmark::State& state, const Peer& peer, std::uint64_t callsOfIteration) {
    if (peer.callsMade() != callsOfIteration * static_cast<std::uint64_t>(state.iterations())) {
        state.SkipWithError("not every call was made");
    }
}

// The calls come from a thread made for them: what the main thread may use stands for the whole process.
template <class Calls>
void callFrom(pid_t target, Place place, const Calls& calls) {
    std::exception_ptr error;
    std::thread([&] {
        try {
            bench::bindCaller(gettid());
            bench::bindTarget(target, place);
            calls();
        } catch (...) {
            error = std::current_exception();
        }
    }).join();
    if (error) {
        std::rethrow_exception(error);
    }
}

// An iteration's time is the median of 201 calls.
template <class Peer>
void asleep(benchmark::State& state, Place place) {
    constexpr std::size_t callsOfIteration = 201;
    Peer peer;
    const bench::ThreadState target(peer.targetThread());
    callFrom(peer.targetThread(), place, [&] {
        for (auto _ : state) {
            state.SetIterationTime(bench::medianOf(callsOfIteration, [&] {
                target.waitUntilAsleep();
                const auto start = std::chrono::steady_clock::now();
                peer.call();
                return secondsSince(start);
            }));
        }
    });
    checkCalls(state, peer, callsOfIteration);
}

// An iteration's time is that of one call in the median of 21 rounds of 100.
template <class Peer>
void backToBack(benchmark::State& state, Place place) {
    constexpr std::size_t rounds = 21;
    constexpr std::size_t callsOfRound = 100;
    Peer peer;
    callFrom(peer.targetThread(), place, [&] {
        for (auto _ : state) {
            state.SetIterationTime(bench::medianOf(rounds, [&] {
                const auto start = std::chrono::steady_clock::now();
                for (std::size_t call = 0; call < callsOfRound; ++call) {
                    peer.call();
                }
                return secondsSince(start) / callsOfRound;
            }));
        }
    });
    checkCalls(state, peer, rounds * callsOfRound);
}

// The number of iterations is given, since the time that is measured says little about what they take.
template <class Peer>
void registerPeer(const std::string& name) {
    const std::pair<const char*, Place> places[] = {{"apart", Place::apart}, {"together", Place::together}};
    for (const auto& [where, place] : places) {
        benchmark::RegisterBenchmark(("call_asleep/" + name + "/" + where).c_str(), asleep<Peer>, place)
            ->Iterations(5)
            ->UseManualTime();
        benchmark::RegisterBenchmark(("call_awake/" + name + "/" + where).c_str(), backToBack<Peer>, place)
            ->Iterations(5)
            ->UseManualTime();
    }
}

[[maybe_unused]] const bool registered = [] {
    registerPeer<Dispatched>("korva");
    registerPeer<bench::FutexPingPong>("futex");
    registerPeer<AsioPosted>("asio");
    registerPeer<QtInvoked>("qt");
    return true;
}();

}  // namespace
