// What waits, calls, tasks and values ask of the memory.
#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <new>
#include <span>
#include <type_traits>

#include "framework/active_object.h"
#include "framework/dispatcher.h"
#include "framework/shared_bytes.h"
#include "framework/wait_any.h"
#include "tests/support/allocation_count.h"
#include "tests/support/thread_count.h"
#include "tests/support/wait_until.h"

namespace korva::framework {
namespace {

using test::allocationsInUse;
using test::allocationsOf;
using test::waitUntil;

TEST(AllocationCount, SeesEveryKindOfAllocation) {
    // Called as functions: a compiler may leave out what a new-expression would allocate.
    constexpr std::align_val_t wide{64};
    const std::uint64_t before = allocationsInUse();
    std::array<void*, 5> blocks{};
    const std::uint64_t made = allocationsOf([&blocks] {
        blocks = {::operator new(4), ::operator new[](100), ::operator new(8, std::nothrow),
                  ::operator new(64, wide), ::operator new[](64, wide)};
    });
    const std::uint64_t inUse = allocationsInUse();
    const auto address = reinterpret_cast<std::uintptr_t>(blocks[3]);
    ::operator delete(blocks[0]);
    ::operator delete[](blocks[1]);
    ::operator delete(blocks[2], std::nothrow);
    ::operator delete(blocks[3], wide);
    ::operator delete[](blocks[4], wide);
    const std::uint64_t afterwards = allocationsInUse();

    EXPECT_EQ(made, 5U);
    EXPECT_EQ(inUse, before + 5);
    EXPECT_EQ(afterwards, before);
    EXPECT_EQ(address % 64, 0U);
}

TEST(AllocationLimit, RefusesWhatIsBeyondItUntilItEnds) {
    // Called as functions, as above.
    const std::uint64_t before = allocationsInUse();
    void* first = nullptr;
    void* refused = &first;
    bool isRaised = false;
    {
        const test::AllocationLimit limit(1);
        first = ::operator new(4);
        refused = ::operator new(4, std::nothrow);
        try {
            ::operator delete(::operator new(4));
        } catch (const std::bad_alloc&) {
            isRaised = true;
        }
    }
    void* const second = ::operator new(4);
    const std::uint64_t inUse = allocationsInUse();
    ::operator delete(first);
    ::operator delete(second);

    EXPECT_EQ(refused, nullptr);
    EXPECT_TRUE(isRaised);
    EXPECT_EQ(inUse, before + 2);
}

TEST(WaitAllocations, AreNoneOnceThereAreBlocks) {
    WaitableCounter counter;
    std::uint32_t seen = 0;
    EXPECT_FALSE(counter.waitFor(seen, 1));
    EXPECT_EQ(allocationsOf([&] {
                  for (int i = 0; i < 20; ++i) {
                      EXPECT_FALSE(counter.waitFor(seen, 1));
                      counter.add(1);
                      counter.wait(seen);
                  }
              }),
              0U);
}

TEST(WaitAllocations, AreNoneForHandlesOnceThereAreBlocks) {
    WaitableCounter counter;
    std::uint32_t seen = 0;
    platform::Event event;
    const std::array handles{event.handle()};
    std::array waits{WaitRegistration(counter, seen)};
    EXPECT_EQ(waitAny(waits, handles, 1).handle, -1);
    EXPECT_EQ(allocationsOf([&] {
                  for (int i = 0; i < 20; ++i) {
                      EXPECT_EQ(waitAny(waits, handles, 1).handle, -1);
                      event.signal();
                      EXPECT_EQ(waitAny(waits, handles).handle, 0);
                      event.reset();
                  }
              }),
              0U);
}

TEST(CallAllocations, AreNoneFromAThreadWithoutADispatcher) {
    const DispatcherUse worker = Dispatcher::start();
    int count = 0;
    const std::array<char, 200> large{};
    const auto call = [&] {
        for (int i = 0; i < 1000; ++i) {
            worker->runSynchronously([&count, large] { count += large[0] + 1; });
        }
    };
    call();
    EXPECT_EQ(allocationsOf(call), 0U);
    EXPECT_EQ(count, 2000);
}

TEST(CallAllocations, AreNoneBetweenDispatchersThatServeEachOther) {
    const DispatcherUse first = Dispatcher::start();
    const DispatcherUse second = Dispatcher::start();
    int count = 0;
    const auto call = [&] {
        first->runSynchronously([&] {
            for (int i = 0; i < 200; ++i) {
                second->runSynchronously([&] { first->runSynchronously([&count] { ++count; }); });
            }
        });
    };
    call();
    EXPECT_EQ(allocationsOf(call), 0U);
    EXPECT_EQ(count, 400);
}

TEST(TaskAllocations, AreOneAtMostForEachTaskWhateverItHolds) {
    const DispatcherUse worker = Dispatcher::start();
    std::atomic<int> runs{0};
    const std::array<char, 500> large{};
    constexpr int count = 100;
    const auto post = [&](const auto& callable) {
        const int before = runs;
        for (int i = 0; i < count; ++i) {
            worker->postAndForget(callable);
        }
        EXPECT_TRUE(waitUntil([&] { return runs == before + count; }));
        worker->runSynchronously([] {});
    };
    const auto small = [&runs] { ++runs; };
    const auto big = [&runs, large] { runs += large[0] + 1; };
    post(small);
    // What is small lies in the queue, which grows by dozens of places at a time.
    EXPECT_LE(allocationsOf([&] { post(small); }), std::uint64_t{count / 20});
    post(big);
    EXPECT_LE(allocationsOf([&] { post(big); }), std::uint64_t{count + count / 20});
}

TEST(TaskAllocations, AreNoMoreForAHandle) {
    const DispatcherUse worker = Dispatcher::start();
    const auto post = [&] {
        TaskHandle handle = worker->post([] {});
        const TaskHandle copy = handle;
        copy.waitUntilDone();
    };
    for (int i = 0; i < 20; ++i) {
        post();
    }
    worker->runSynchronously([] {});
    EXPECT_EQ(allocationsOf([&] {
                  for (int i = 0; i < 20; ++i) {
                      post();
                  }
                  worker->runSynchronously([] {});
              }),
              20U);
}

TEST(TaskAllocations, AreAllGivenBack) {
    const DispatcherUse worker = Dispatcher::start();
    const auto postMany = [&worker] {
        for (int i = 0; i < 1000; ++i) {
            worker->postAndForget([] {});
            static_cast<void>(worker->post([] {}));
        }
        worker->post([] {}).waitUntilDone();
        worker->post([] {}).waitUntilDone();
        worker->runSynchronously([] {});
    };
    postMany();
    const std::uint64_t before = allocationsInUse();
    postMany();
    EXPECT_TRUE(waitUntil([before] { return allocationsInUse() <= before; }));
}

/// A record like an identifier.
struct Identifier {
    std::uint32_t first = 0;
    std::array<std::uint8_t, 12> rest{};
};

using Floats = std::array<float, 8>;
using Pointer = std::shared_ptr<const int>;

template <class T>
class Owner final : public ObjectClass<Owner<T>, ActiveObject> {
public:
    Observable<T> value{*this};
};

/// Two values that differ, made beforehand.
template <class T>
std::array<T, 2> twoOf() {
    if constexpr (std::is_same_v<T, bool>) {
        return {true, false};
    } else if constexpr (std::is_same_v<T, Identifier>) {
        return {Identifier{1, {}}, Identifier{2, {}}};
    } else if constexpr (std::is_same_v<T, Floats>) {
        return {Floats{1, 2, 3}, Floats{4}};
    } else if constexpr (std::is_same_v<T, SharedBytes>) {
        const std::array<std::byte, 4> bytes{};
        return {SharedBytes(bytes), SharedBytes(std::span(bytes).first(2))};
    } else if constexpr (std::is_same_v<T, Pointer>) {
        return {std::make_shared<const int>(1), std::make_shared<const int>(2)};
    } else {
        return {T{1}, T{2}};
    }
}

template <class T>
class ValueAllocations : public testing::Test {};

using ValueTypes = testing::Types<std::uint32_t, bool, float, Identifier, Floats, SharedBytes, Pointer>;
TYPED_TEST_SUITE(ValueAllocations, ValueTypes);

int callsSeen = 0;

void seeCall(void*, ListenedTo&, ActiveObject&, const void*, void*, const void*, Reason) {
    ++callsSeen;
}

TYPED_TEST(ValueAllocations, AreNoneForAChangeHoweverManyListen) {
    const auto owner = create<Owner<TypeParam>>();
    const auto values = twoOf<TypeParam>();
    int subscribers = 0;
    for (const int wanted : {0, 1, 8}) {
        for (; subscribers < wanted; ++subscribers) {
            owner->value.subscribe(&subscribers, &seeCall, &seeCall);
        }
        callsSeen = 0;
        owner->value.set(values[1]);
        EXPECT_EQ(allocationsOf([&] {
                      for (int i = 0; i < 10; ++i) {
                          owner->value.set(values[static_cast<std::size_t>(i % 2)]);
                      }
                  }),
                  0U)
            << wanted << " subscribers";
        EXPECT_GE(callsSeen, 20 * wanted);
    }
}

TYPED_TEST(ValueAllocations, AreNoneForAChangeFromAnotherThread) {
    const DispatcherUse worker = Dispatcher::start();
    Ref<Owner<TypeParam>> owner;
    worker->runSynchronously([&owner] { owner = create<Owner<TypeParam>>(); });
    const auto values = twoOf<TypeParam>();
    const auto change = [&] {
        for (int i = 0; i < 50; ++i) {
            owner->value.set(values[static_cast<std::size_t>(i % 2)]);
        }
    };
    change();
    EXPECT_EQ(allocationsOf(change), 0U);
    worker->runSynchronously([&owner] { owner = nullptr; });
}

void startUseAndJoin() {
    const DispatcherUse worker = Dispatcher::start();
    bool ran = false;
    const TaskHandle task = worker->post([&ran] { ran = true; });
    EXPECT_TRUE(worker->runSynchronously([] {}));
    task.waitUntilDone();
    EXPECT_TRUE(ran);
}

TEST(DispatcherAllocations, AndThreadsAreAllGivenBackByAThousandOfThem) {
    startUseAndJoin();
    const std::uint32_t liveBefore = liveThreadCount().get();
    const std::size_t threadsBefore = test::threadCountAtRest();
    const std::uint64_t allocationsBefore = allocationsInUse();

    for (int i = 0; i < 1000; ++i) {
        startUseAndJoin();
    }

    EXPECT_EQ(liveThreadCount().get(), liveBefore);
    EXPECT_TRUE(waitUntil([threadsBefore] { return test::threadCount() <= threadsBefore; }));
    EXPECT_EQ(allocationsInUse(), allocationsBefore);
}

TEST(DelayAllocations, AreAllGivenBackWithTheirDispatcher) {
    const auto run = [] {
        const std::uint32_t liveBefore = liveThreadCount().get();
        {
            const DispatcherUse worker = Dispatcher::start();
            const TaskHandle cancelled = worker->postDelayed(3'600'000, [] {});
            worker->postDelayed(1, [] {}).waitUntilDone();
        }
        EXPECT_TRUE(waitUntil([liveBefore] { return liveThreadCount().get() == liveBefore; }));
    };
    run();
    const std::uint64_t before = allocationsInUse();
    for (int i = 0; i < 20; ++i) {
        run();
    }
    EXPECT_EQ(allocationsInUse(), before);
}

}  // namespace
}  // namespace korva::framework
