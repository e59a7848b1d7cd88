#include "framework/ring_queue.h"

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <cstddef>
#include <deque>
#include <numeric>
#include <random>
#include <thread>
#include <vector>

namespace korva::framework {
namespace {

std::vector<int> numbers(int count) {
    std::vector<int> all(static_cast<std::size_t>(count));
    std::iota(all.begin(), all.end(), 0);
    return all;
}

std::vector<int> popAll(RingQueue<int>& queue) {
    std::vector<int> popped;
    for (auto next = queue.pop(); next.found; next = queue.pop()) {
        popped.push_back(*next.entry);
        queue.finish();
    }
    return popped;
}

TEST(RingQueue, GivesEntriesInTheOrderOfTheirPushes) {
    std::vector<int> entries = numbers(5);
    RingQueue<int> queue;
    for (int& entry : entries) {
        queue.push(&entry);
    }
    EXPECT_EQ(popAll(queue), entries);
}

TEST(RingQueue, CountsAnEntryUntilItIsFinished) {
    int entry = 0;
    RingQueue<int> queue;
    const auto pushed = queue.push(&entry);
    EXPECT_TRUE(pushed.accepted);
    EXPECT_EQ(pushed.pending, 1U);

    const auto popped = queue.pop();
    EXPECT_TRUE(popped.found);
    EXPECT_EQ(popped.entry, &entry);
    EXPECT_EQ(popped.pending, 1U);
    EXPECT_EQ(queue.count().get(), 1U);

    EXPECT_EQ(queue.finish(), 0U);
    EXPECT_EQ(queue.count().get(), 0U);
}

TEST(RingQueue, HasNothingToGiveWhileItsOnlyEntryRuns) {
    int entry = 0;
    RingQueue<int> queue;
    queue.push(&entry);
    EXPECT_TRUE(queue.pop().found);

    const auto none = queue.pop();

    EXPECT_FALSE(none.found);
    EXPECT_EQ(none.entry, nullptr);
    EXPECT_EQ(none.pending, 1U);
}

TEST(RingQueue, LeavesTheCountOfAnEmptyQueueAlone) {
    RingQueue<int> queue;
    EXPECT_FALSE(queue.pop().found);
    EXPECT_EQ(queue.count().get(), 0U);
}

TEST(RingQueue, TellsANullEntryFromNone) {
    RingQueue<int> queue;
    queue.push(nullptr);
    const auto popped = queue.pop();
    EXPECT_TRUE(popped.found);
    EXPECT_EQ(popped.entry, nullptr);
    EXPECT_EQ(queue.finish(), 0U);
}

TEST(RingQueue, RefusesEntriesOnceClosedAndKeepsThoseThatItHas) {
    std::vector<int> entries = numbers(2);
    RingQueue<int> queue;
    queue.push(&entries[0]);
    queue.close();

    const auto refused = queue.push(&entries[1]);

    EXPECT_FALSE(refused.accepted);
    EXPECT_EQ(refused.pending, 1U);
    EXPECT_EQ(popAll(queue), std::vector<int>{0});
    EXPECT_FALSE(queue.push(&entries[1]).accepted);
    EXPECT_EQ(queue.count().get(), 0U);
}

TEST(RingQueue, KeepsTheOrderWhenItGrowsAroundItsEnd) {
    std::vector<int> entries = numbers(200);
    for (std::size_t offset = 0; offset < 17; ++offset) {
        RingQueue<int> queue;
        for (std::size_t i = 0; i < offset; ++i) {
            queue.push(&entries[i]);
            queue.pop();
            queue.finish();
        }
        for (int& entry : entries) {
            queue.push(&entry);
        }
        EXPECT_EQ(queue.count().get(), entries.size());
        EXPECT_EQ(popAll(queue), entries) << offset;
    }
}

TEST(RingQueue, DoesWhatADequeDoes) {
    constexpr unsigned seed = 5309;
    std::mt19937 random(seed);
    std::vector<int> entries = numbers(3000);
    RingQueue<int> queue;
    std::deque<int*> model;
    for (int& entry : entries) {
        if (random() % 5 < 3) {
            queue.push(&entry);
            model.push_back(&entry);
        } else {
            const auto popped = queue.pop();
            ASSERT_EQ(popped.found, !model.empty()) << "seed " << seed;
            if (popped.found) {
                ASSERT_EQ(popped.entry, model.front()) << "seed " << seed;
                model.pop_front();
                queue.finish();
            }
        }
        ASSERT_EQ(queue.count().get(), model.size()) << "seed " << seed;
    }
}

TEST(RingQueue, LetsThoseGoWhoWaitForItsCount) {
    int entry = 0;
    RingQueue<int> queue;
    std::uint32_t seen = 0;
    std::thread waiter([&] { queue.count().wait(seen); });
    queue.push(&entry);
    waiter.join();
    EXPECT_EQ(seen, 1U);
}

TEST(RingQueue, GivesEachEntryOfSeveralThreadsOnce) {
    constexpr int perThread = 5000;
    std::array<std::vector<int>, 2> entries{numbers(perThread), numbers(perThread)};
    std::vector<std::atomic<int>> taken(perThread);
    std::atomic<int> takenInAll{0};
    RingQueue<int> queue;
    std::vector<std::thread> threads;
    for (std::vector<int>& own : entries) {
        threads.emplace_back([&queue, &own] {
            for (int& entry : own) {
                queue.push(&entry);
            }
        });
        threads.emplace_back([&] {
            while (takenInAll < 2 * perThread) {
                if (const auto next = queue.pop(); next.found) {
                    ++taken[static_cast<std::size_t>(*next.entry)];
                    ++takenInAll;
                    queue.finish();
                } else {
                    std::this_thread::yield();
                }
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    for (const std::atomic<int>& times : taken) {
        ASSERT_EQ(times, 2);
    }
    EXPECT_EQ(queue.count().get(), 0U);
}

}  // namespace
}  // namespace korva::framework
