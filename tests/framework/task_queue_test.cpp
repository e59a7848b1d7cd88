#include "framework/task_queue.h"

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <cstdint>
#include <deque>
#include <memory>
#include <random>
#include <stdexcept>
#include <thread>
#include <utility>
#include <vector>

namespace korva::framework {
namespace {

using Place = DispatchTask::Place;
using Runs = std::vector<int>;

Ref<DispatchTask> recording(Runs& runs, int number, Place place = Place::back) {
    return makeTask([&runs, number] { runs.push_back(number); }, {}, place);
}

void runAll(TaskQueue& queue) {
    while (queue.runNext()) {
    }
}

TEST(TaskQueue, RunsTasksInTheOrderOfTheirPushes) {
    Runs runs;
    TaskQueue queue;
    for (int i = 0; i < 5; ++i) {
        EXPECT_TRUE(queue.push(recording(runs, i)));
    }
    runAll(queue);
    EXPECT_EQ(runs, (Runs{0, 1, 2, 3, 4}));
}

TEST(TaskQueue, RunsTheLatestOfTheFrontFirst) {
    Runs runs;
    TaskQueue queue;
    queue.push(recording(runs, 0));
    queue.push(recording(runs, 1, Place::front));
    queue.push(recording(runs, 2));
    queue.push(recording(runs, 3, Place::front));
    runAll(queue);
    EXPECT_EQ(runs, (Runs{3, 1, 0, 2}));
}

TEST(TaskQueue, LetsTheFrontOvertakeWhatWasTakenAlready) {
    Runs runs;
    TaskQueue queue;
    for (int i = 0; i < 3; ++i) {
        queue.push(recording(runs, i));
    }
    EXPECT_TRUE(queue.runNext());
    queue.push(recording(runs, 10, Place::front));
    queue.push(recording(runs, 11, Place::front));
    EXPECT_TRUE(queue.runNext());
    queue.push(recording(runs, 12, Place::front));
    queue.push(recording(runs, 3));
    runAll(queue);
    EXPECT_EQ(runs, (Runs{0, 11, 12, 10, 1, 2, 3}));
}

TEST(TaskQueue, DoesWhatADequeDoes) {
    constexpr unsigned seed = 5311;
    std::mt19937 random(seed);
    TaskQueue queue;
    std::deque<int> model;
    Runs runs;
    for (int i = 0; i < 50'000; ++i) {
        // In long runs of either kind, so that batches grow beyond what lies together.
        const bool pushes = (i / 100) % 2 == 0 ? random() % 8 != 0 : random() % 8 == 0;
        if (!pushes) {
            runs.clear();
            ASSERT_EQ(queue.runNext(), !model.empty()) << "seed " << seed;
            if (!model.empty()) {
                ASSERT_EQ(runs, Runs{model.front()}) << "seed " << seed;
                model.pop_front();
            }
        } else if (random() % 8 == 0) {
            model.push_front(i);
            ASSERT_TRUE(queue.push(recording(runs, i, Place::front)));
        } else {
            model.push_back(i);
            ASSERT_TRUE(random() % 2 == 0 ? queue.push(recording(runs, i))
                                          : queue.push([&runs, i] { runs.push_back(i); }));
        }
        ASSERT_EQ(queue.isEmpty(), model.empty()) << "seed " << seed;
    }
}

TEST(TaskQueue, RunsATaskThatRunsTheNextOnes) {
    for (int count = 1; count < 100; ++count) {
        TaskQueue queue;
        Runs runs;
        for (int i = 0; i < count; ++i) {
            queue.push([&queue, &runs, i, canary = std::make_shared<int>(i)] {
                while (queue.runNext()) {
                }
                runs.push_back(i);
                EXPECT_EQ(*canary, i);
            });
        }
        runAll(queue);
        Runs lastFirst;
        for (int i = count; i-- > 0;) {
            lastFirst.push_back(i);
        }
        EXPECT_EQ(runs, lastFirst);
    }
}

TEST(TaskQueue, IsDoneWithATaskThatRaises) {
    TaskQueue queue;
    const auto held = std::make_shared<int>();
    queue.push([held] { throw std::runtime_error("raised"); });
    EXPECT_THROW(queue.runNext(), std::runtime_error);
    EXPECT_TRUE(queue.isEmpty());
    EXPECT_EQ(held.use_count(), 1);
}

TEST(TaskQueue, IsEmptyAtFirstAndRunsNothing) {
    TaskQueue queue;
    EXPECT_TRUE(queue.isEmpty());
    EXPECT_FALSE(queue.runNext());
    EXPECT_EQ(queue.count().get(), 0U);
}

TEST(TaskQueue, CountsWhatIsPushedUntilItIsTaken) {
    for (const Place place : {Place::back, Place::front}) {
        TaskQueue queue;
        for (int round = 0; round < 3; ++round) {
            queue.push(makeTask([] {}, {}, place));
            EXPECT_NE(queue.count().get(), 0U);
            EXPECT_FALSE(queue.isEmpty());

            EXPECT_TRUE(queue.runNext());
            EXPECT_TRUE(queue.isEmpty());
            EXPECT_FALSE(queue.runNext());
            EXPECT_EQ(queue.count().get(), 0U);
        }
    }
}

TEST(TaskQueue, RefusesTasksOnceClosedAndKeepsThoseThatItHas) {
    Runs runs;
    TaskQueue queue;
    queue.push(recording(runs, 0));
    queue.push(recording(runs, 1));
    EXPECT_TRUE(queue.runNext());
    queue.push(recording(runs, 2));
    queue.push(recording(runs, 3, Place::front));

    queue.close();

    EXPECT_FALSE(queue.push(recording(runs, 4)));
    EXPECT_FALSE(queue.push(recording(runs, 5, Place::front)));
    runAll(queue);
    EXPECT_EQ(runs, (Runs{0, 3, 1, 2}));
    EXPECT_FALSE(queue.push(recording(runs, 6)));
    EXPECT_TRUE(queue.isEmpty());
}

TEST(TaskQueue, ClosedEmptyRunsNothing) {
    TaskQueue queue;
    queue.close();
    EXPECT_TRUE(queue.isEmpty());
    EXPECT_FALSE(queue.runNext());
    queue.close();
    EXPECT_FALSE(queue.push(makeTask([] {})));
}

TEST(TaskQueue, LetsGoOfRefusedAndOfLeftTasks) {
    const auto held = std::make_shared<int>();
    {
        TaskQueue queue;
        queue.push(makeTask([held] {}));
        queue.push(makeTask([held] {}, {}, Place::front));
        EXPECT_TRUE(queue.runNext());
        queue.push(makeTask([held] {}));
        EXPECT_EQ(held.use_count(), 3);
    }
    EXPECT_EQ(held.use_count(), 1);
    TaskQueue closed;
    closed.close();
    closed.push(makeTask([held] {}));
    EXPECT_EQ(held.use_count(), 1);
}

/// What each of several threads pushes: its tasks count themselves, and that they come in their order.
struct Pusher {
    int next = 0;
    bool isInOrder = true;
    int fronts = 0;
};

TEST(TaskQueue, LosesNothingOfSeveralThreadsAndWakesTheOneThatTakes) {
    constexpr int perThread = 20'000;
    std::array<Pusher, 3> pushers;
    TaskQueue queue;
    std::vector<std::thread> threads;
    for (Pusher& own : pushers) {
        threads.emplace_back([&queue, &own] {
            for (int i = 0; i < perThread; ++i) {
                if (i % 4 == 0) {
                    queue.push(makeTask([&own] { ++own.fronts; }, {}, Place::front));
                }
                queue.push(makeTask([&own, i] { own.isInOrder = own.next++ == i && own.isInOrder; }));
            }
        });
    }
    const auto isComplete = [&pushers] {
        for (const Pusher& pusher : pushers) {
            if (pusher.next != perThread || pusher.fronts != perThread / 4) {
                return false;
            }
        }
        return true;
    };
    while (!isComplete()) {
        if (queue.isEmpty()) {
            std::uint32_t silent = 0;
            queue.count().wait(silent);
        }
        queue.runNext();
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    for (const Pusher& pusher : pushers) {
        EXPECT_TRUE(pusher.isInOrder);
    }
    EXPECT_TRUE(queue.isEmpty());
}

TEST(TaskQueue, RunsWhatItAcceptsHoweverThreadsMeetItsClose) {
    for (int round = 0; round < 50; ++round) {
        TaskQueue queue;
        std::atomic<int> accepted{0};
        int runs = 0;
        std::vector<std::thread> threads;
        for (const Place place : {Place::back, Place::front}) {
            threads.emplace_back([&, place] {
                while (queue.push(makeTask([&runs] { ++runs; }, {}, place))) {
                    ++accepted;
                    std::this_thread::yield();
                }
            });
        }
        while (runs < 10) {
            queue.runNext();
        }
        queue.close();
        runAll(queue);
        for (std::thread& thread : threads) {
            thread.join();
        }
        EXPECT_EQ(runs, accepted);
        EXPECT_TRUE(queue.isEmpty());
    }
}

}  // namespace
}  // namespace korva::framework
