// Two threads that post tasks to a third, beside another library's queue of tasks.
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <array>
#include <boost/asio/executor_work_guard.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/post.hpp>
#include <chrono>
#include <cstdint>
#include <future>
#include <latch>
#include <string>
#include <thread>
#include <utility>

#include "bench/support/median.h"
#include "bench/support/processors.h"
#include "framework/dispatcher.h"

namespace {

using namespace korva;
using Clock = std::chrono::steady_clock;

constexpr std::uint32_t tasksOfEach = 100'000;
constexpr std::uint32_t producerCount = 2;
constexpr std::uint32_t allTasks = producerCount * tasksOfEach;

/// What the tasks do: they count on one thread, without a lock, and the last one notes the time.
class Count {
public:
    void next() {
        if (++counted == allTasks) {
            end = Clock::now();
            complete.count_down();
        }
    }
    /// The time at which the last task ran.
    Clock::time_point waitForLast() {
        complete.wait();
        return end;
    }

private:
    std::uint32_t counted = 0;
    Clock::time_point end;
    std::latch complete{1};
};

class Dispatched {
public:
    pid_t targetThread() {
        pid_t thread = 0;
        dispatcher->runSynchronously([&thread] { thread = gettid(); });
        return thread;
    }
    void post(Count& count) {
        dispatcher->postAndForget([&count] { count.next(); });
    }

private:
    framework::DispatcherUse dispatcher = framework::Dispatcher::start();
};

class Asio {
public:
    Asio() = default;
    ~Asio() {
        work.reset();
        thread.join();
    }
    Asio(const Asio&) = delete;
    Asio& operator=(const Asio&) = delete;

    pid_t targetThread() {
        std::promise<pid_t> id;
        boost::asio::post(context, [&id] { id.set_value(gettid()); });
        return id.get_future().get();
    }
    void post(Count& count) {
        boost::asio::post(context, [&count] { count.next(); });
    }

private:
    boost::asio::io_context context{1};  // the number of its threads
    boost::asio::executor_work_guard<boost::asio::io_context::executor_type> work = make_work_guard(context);
    std::thread thread{[this] { context.run(); }};
};

// The producers are there when the time begins, so it is that from the first post to the last task's end.
template <class Queue>
Clock::duration timeOfAll(Queue& queue) {
    Count count;
    std::latch ready{producerCount};
    std::latch gate{1};
    const auto produce = [&] {
        bench::bindCaller(gettid());
        ready.count_down();
        gate.wait();
        for (std::uint32_t i = 0; i < tasksOfEach; ++i) {
            queue.post(count);
        }
    };
    std::array<std::jthread, producerCount> producers;
    for (std::jthread& producer : producers) {
        producer = std::jthread(produce);
    }
    ready.wait();
    const Clock::time_point start = Clock::now();
    gate.count_down();
    return count.waitForLast() - start;
}

// The time of one task: the median of five rounds.
template <class Queue>
void post(benchmark::State& state, bench::Place place) {
    Queue queue;
    bench::bindTarget(queue.targetThread(), place);
    for (auto _ : state) {
        state.SetIterationTime(bench::medianOf(
            5, [&] { return std::chrono::duration<double>(timeOfAll(queue)).count() / allTasks; }));
    }
}

template <class Queue>
void registerPeer(const std::string& name) {
    for (const auto& [where, place] :
         {std::pair{"apart", bench::Place::apart}, {"together", bench::Place::together}}) {
        benchmark::RegisterBenchmark(("post/" + name + "/" + where).c_str(), post<Queue>, place)
            ->Iterations(1)
            ->UseManualTime();
    }
}

[[maybe_unused]] const bool registered = [] {
    registerPeer<Dispatched>("korva");
    registerPeer<Asio>("asio");
    return true;
}();

}  // namespace
