#include "framework/framework_scope.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <optional>
#include <thread>
#include <utility>
#include <vector>

#include "framework/dispatcher_registry.h"
#include "framework/wait_block.h"
#include "tests/support/busy_dispatcher.h"
#include "tests/support/one_time_gate.h"
#include "tests/support/wait_until.h"

namespace korva::framework {
namespace {

using Clock = std::chrono::steady_clock;
using test::OneTimeGate;
using test::waitUntil;

FrameworkScope::Options external() {
    FrameworkScope::Options options;
    options.external = true;
    return options;
}

TEST(FrameworkScope, GivesAThreadWithoutADispatcherAHostedOne) {
    {
        const FrameworkScope scope({});
        ASSERT_NE(scope.hostDispatcher(), nullptr);
        EXPECT_EQ(scope.hostDispatcher(), Dispatcher::current());
        EXPECT_TRUE(scope.hostDispatcher()->isHosted());
        EXPECT_EQ(scope.hostDispatcher()->rootType().identity, nullptr);
    }
    EXPECT_EQ(Dispatcher::current(), nullptr);
    EXPECT_TRUE(dispatcherRegistry().all().empty());
}

TEST(FrameworkScope, MakesAHostedDispatcherThatTakesItsOwnCallsAtOnce) {
    const FrameworkScope scope({});
    bool ran = false;
    EXPECT_EQ(scope.hostDispatcher()->currentState(), Dispatcher::running);
    EXPECT_TRUE(scope.hostDispatcher()->runSynchronously([&ran] { ran = true; }));
    EXPECT_TRUE(ran);
}

TEST(FrameworkScope, HandsTheWakeCallbackToTheHostedDispatcher) {
    std::atomic<int> wakes{0};
    FrameworkScope::Options options;
    options.wakeCallback = [&wakes](Dispatcher&) { ++wakes; };
    const FrameworkScope scope(options);
    std::thread caller([&scope] { EXPECT_TRUE(scope.hostDispatcher()->runSynchronously([] {})); });
    EXPECT_TRUE(waitUntil([&wakes] { return wakes == 1; }));
    EXPECT_TRUE(scope.hostDispatcher()->runOne());
    caller.join();
}

TEST(FrameworkScope, SharesTheDispatcherThatTheThreadHas) {
    const FrameworkScope outer({});
    {
        const FrameworkScope inner({});
        EXPECT_EQ(inner.hostDispatcher(), outer.hostDispatcher());
    }
    EXPECT_EQ(Dispatcher::current(), outer.hostDispatcher());
    EXPECT_TRUE(outer.hostDispatcher()->runSynchronously([] {}));
}

TEST(FrameworkScope, GivesAThreadANewOneInPlaceOfOneThatWasStopped) {
    const FrameworkScope outer({});
    outer.hostDispatcher()->requestStop();
    {
        const FrameworkScope inner({});
        EXPECT_NE(inner.hostDispatcher(), outer.hostDispatcher());
        EXPECT_EQ(Dispatcher::current(), inner.hostDispatcher());
        EXPECT_TRUE(inner.hostDispatcher()->runSynchronously([] {}));
        inner.hostDispatcher()->postAndForget([] {});
        EXPECT_TRUE(inner.hostDispatcher()->runOne());
    }
    EXPECT_EQ(Dispatcher::current(), nullptr);
}

TEST(FrameworkScope, OnADispatchersThreadUsesThatDispatcher) {
    const FrameworkScope outer({});
    const DispatcherUse worker = Dispatcher::start();
    worker->runSynchronously([&] {
        const FrameworkScope inner({});
        EXPECT_EQ(inner.hostDispatcher(), worker.get());
    });
    EXPECT_TRUE(worker->runSynchronously([] {}));
}

TEST(FrameworkScope, StopsAndJoinsAllThreadsWhenTheLastOneEnds) {
    const std::uint32_t liveBefore = liveThreadCount().get();
    std::atomic<int> runs{0};
    std::vector<DispatcherUse> workers;
    {
        const FrameworkScope scope({});
        for (int i = 0; i < 3; ++i) {
            workers.push_back(Dispatcher::start());
            for (int task = 0; task < 100; ++task) {
                workers.back()->postAndForget([&runs] { ++runs; });
            }
        }
    }
    EXPECT_EQ(runs, 300) << "accepted tasks are run before the end";
    EXPECT_EQ(liveThreadCount().get(), liveBefore);
    EXPECT_TRUE(dispatcherRegistry().all().empty());
    for (const DispatcherUse& worker : workers) {
        EXPECT_FALSE(worker->runSynchronously([] {}));
    }
}

TEST(FrameworkScope, RunsWhatItsOwnThreadHasLeftAtTheEnd) {
    bool ran = false;
    {
        const FrameworkScope scope({});
        scope.hostDispatcher()->postAndForget([&ran] { ran = true; });
    }
    EXPECT_TRUE(ran);
}

TEST(FrameworkScope, LetsThreadsThatItJoinsCallItsOwn) {
    std::atomic<int> answered{0};
    {
        const FrameworkScope scope({});
        const DispatcherUse worker = Dispatcher::start();
        Dispatcher* const host = scope.hostDispatcher();
        const Ref<Dispatcher> kept = Ref<Dispatcher>::share(host);
        for (int i = 0; i < 20; ++i) {
            // Run or refused: what counts is that nobody waits for ever.
            worker->postAndForget([&answered, kept] {
                kept->runSynchronously([] {});
                ++answered;
            });
        }
    }
    EXPECT_EQ(answered, 20);
}

TEST(FrameworkScope, JoinsNothingWhileAnotherOneIsLeft) {
    const DispatcherUse worker = Dispatcher::start();
    {
        std::optional<FrameworkScope> first;
        first.emplace(FrameworkScope::Options{});
        {
            const FrameworkScope second(external());
            first.reset();
            EXPECT_TRUE(worker->runSynchronously([] {}));
            first.emplace(FrameworkScope::Options{});
        }
        EXPECT_TRUE(worker->runSynchronously([] {}));
    }
    EXPECT_FALSE(worker->runSynchronously([] {}));
}

TEST(FrameworkScope, WithoutAStopRequestWaitsUntilTheThreadsStopByThemselves) {
    test::BusyDispatcher busy;
    std::atomic<bool> wasAsked{false};
    std::thread helper;
    {
        FrameworkScope::Options options;
        options.requestStop = false;
        const FrameworkScope scope(options);
        Dispatcher* const host = scope.hostDispatcher();
        helper = std::thread([&, host = Ref<Dispatcher>::share(host)] {
            // The host's own dispatcher stops at the end of the scope: then the scope has begun to wait.
            EXPECT_TRUE(waitUntil([&] { return host->currentState() == Dispatcher::stopping; }));
            busy.end();
            EXPECT_TRUE(busy.worker->runSynchronously([] {})) << "nobody has asked it to stop";
            wasAsked = true;
            busy.worker->requestStop();
        });
    }
    EXPECT_TRUE(wasAsked);
    helper.join();
    EXPECT_EQ(liveThreadCount().get(), 0U);
}

TEST(FrameworkScope, EndsWhenItsLimitPasses) {
    test::BusyDispatcher busy;
    const Clock::time_point begin = Clock::now();
    {
        FrameworkScope::Options options;
        options.timeoutMs = 60;
        const FrameworkScope scope(options);
    }
    EXPECT_GE(Clock::now() - begin, std::chrono::milliseconds(60));
    EXPECT_EQ(liveThreadCount().get(), 1U);
    EXPECT_EQ(busy.worker->currentState(), Dispatcher::stopping);
    EXPECT_EQ(Dispatcher::current(), nullptr);
    busy.end();
    EXPECT_TRUE(busy.worker->join(waitForever));
}

TEST(FrameworkScope, WithoutAnyTimeAsksNobodyToStop) {
    const DispatcherUse worker = Dispatcher::start();
    {
        FrameworkScope::Options options;
        options.timeoutMs = 0;
        const FrameworkScope scope(options);
    }
    EXPECT_EQ(worker->currentState() == Dispatcher::stopping, false);
    EXPECT_TRUE(worker->runSynchronously([] {}));
}

TEST(FrameworkScope, WithALimitJoinsThoseWhoEndInTime) {
    const DispatcherUse worker = Dispatcher::start();
    {
        FrameworkScope::Options options;
        options.timeoutMs = 20'000;
        const FrameworkScope scope(options);
    }
    EXPECT_EQ(liveThreadCount().get(), 0U);
    EXPECT_TRUE(dispatcherRegistry().all().empty());
}

TEST(FrameworkScope, EndsTheWorkersOfDelayedTasksToo) {
    const DispatcherUse worker = Dispatcher::start();
    bool ran = false;
    TaskHandle task;
    {
        const FrameworkScope scope({});
        task = worker->postDelayed(3'600'000, [&ran] { ran = true; });
    }
    EXPECT_EQ(liveThreadCount().get(), 0U);
    EXPECT_FALSE(ran);
}

TEST(ExternalScope, GivesItsThreadNoDispatcher) {
    const FrameworkScope scope(external());
    EXPECT_EQ(scope.hostDispatcher(), nullptr);
    EXPECT_EQ(Dispatcher::current(), nullptr);
}

TEST(ExternalScope, WaitsForAllThreadsWhenItIsTheLast) {
    test::BusyDispatcher busy;
    const DispatcherUse other = Dispatcher::start();
    std::atomic<bool> wereLetGo{false};
    OneTimeGate scopeEnds;
    std::thread helper([&] {
        EXPECT_TRUE(scopeEnds.pass());
        EXPECT_TRUE(other->runSynchronously([] {})) << "an external scope asks nobody to stop";
        other->requestStop();
        busy.worker->requestStop();
        wereLetGo = true;
        busy.end();
    });
    {
        const FrameworkScope scope(external());
        scopeEnds.open();
    }
    EXPECT_TRUE(wereLetGo);
    EXPECT_EQ(liveThreadCount().get(), 0U);
    helper.join();
}

TEST(ExternalScope, WaitsForNobodyWhileAnotherOneIsLeft) {
    const DispatcherUse worker = Dispatcher::start();
    std::optional<FrameworkScope> last;
    last.emplace(external());
    { const FrameworkScope first(external()); }
    EXPECT_TRUE(worker->runSynchronously([] {}));
    worker->requestStop();
    last.reset();
    EXPECT_EQ(liveThreadCount().get(), 0U);
}

TEST(ExternalScope, WaitsForThreadsThatTheDropOfTheirLastUseLeavesRunning) {
    std::atomic<bool> ran{false};
    OneTimeGate mayEnd;
    {
        const FrameworkScope scope(external());
        auto use = std::make_unique<DispatcherUse>(Dispatcher::start());
        const Ref<Dispatcher> worker = use->ref();
        worker->postAndForget([&ran, &mayEnd, own = std::move(use)]() mutable {
            EXPECT_TRUE(mayEnd.pass());
            own = nullptr;
            ran = true;
        });
        mayEnd.open();
    }
    EXPECT_TRUE(ran);
    EXPECT_EQ(liveThreadCount().get(), 0U);
}

TEST(ExternalScope, FreesTheWaitBlocksWhenItIsTheLast) {
    {
        const FrameworkScope scope(external());
        const DispatcherUse worker = Dispatcher::start();
        worker->runSynchronously([] {
            WaitableCounter never;
            std::uint32_t seen = 0;
            EXPECT_FALSE(never.waitFor(seen, 1));
        });
        EXPECT_GT(waitBlockCounts().all, 0U);
    }
    EXPECT_EQ(waitBlockCounts().all, 0U);
}

TEST(ExternalScope, MayBeginAnewAfterTheLastOneEnded) {
    for (int round = 0; round < 50; ++round) {
        const FrameworkScope scope(external());
        const DispatcherUse worker = Dispatcher::start();
        EXPECT_TRUE(worker->runSynchronously([] {}));
    }
    EXPECT_EQ(liveThreadCount().get(), 0U);
}

}  // namespace
}  // namespace korva::framework
