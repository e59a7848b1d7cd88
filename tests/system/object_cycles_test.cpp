// Objects that come and go, many times and many at once: what they took is given back.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <filesystem>
#include <memory>
#include <thread>
#include <vector>

#include "platform/com_apartment.h"
#include "tests/support/thread_count.h"
#include "tests/support/wait_until.h"
#include "tests/system/class_test.h"
#include "tests/system/support/hosted_effect.h"
#include "tests/system/support/open_handles.h"

namespace korva::test {
namespace {

using Samples = std::vector<float>;

/// What a process has while nobody does anything.
struct Holdings {
    std::size_t threads = 0;
    std::size_t handles = 0;
    std::size_t bytes = 0;
};

Holdings holdings() {
    Holdings now;
    now.threads = threadCountAtRest();
    now.handles = openHandles();
    now.bytes = bytesInUse();
    return now;
}

/// Runs `work(n)` on four threads at once, each with a number.
template <class Work>
void onFourThreads(const Work& work) {
    std::vector<std::thread> threads;
    for (std::size_t n = 0; n < 4; ++n) {
        threads.emplace_back([&, n] {
            const platform::ComApartment apartment;
            work(n);
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
}

class ObjectCycles : public testing::Test {
protected:
    static constexpr std::size_t cycles = KORVA_SYSTEM_CYCLES;

    ObjectCycles() {
        effect.recording.noteSamples(0);
        for (const ClassFacts& facts : allClasses) {
            effect.install(facts);
        }
    }

    /// One life of an object; every tenth has an endpoint and with it a module.
    void live(std::size_t number) {
        const bool hasModule = number % 10 == 0;
        HostedObject object(effect.library, allClasses[number % allClasses.size()]);
        auto record = secondRecord(&effect.endpointProperties, &effect.effectsProperties,
                                   hasModule ? &effect.devices : nullptr);
        bool isRight = test::initialize(*object.apo, record) == result::ok;
        isRight = object.lock(floats(2)) == result::ok && isRight;
        const float expected = hasModule ? 0.5f : 1.0f;
        isRight = object.play(Samples{1, 1}, 2, 2) == Samples{expected, expected} && isRight;
        isRight = object.unlock() == result::ok && isRight;
        isRight = object.release() == 0 && isRight;
        wrong += isRight ? 0 : 1;
    }
    void liveOnFourThreads(std::size_t count) {
        onFourThreads([&](std::size_t thread) {
            for (std::size_t n = thread; n < count; n += 4) {
                live(n);
            }
        });
    }

    /// A module that has its language's library in it, as modules for Windows do, takes memory and handles of
    /// that along whenever it is unloaded. There it stays loaded, which leaves what hosts it to be seen.
    [[nodiscard]] std::unique_ptr<LoadedLibrary> heldModule() const {
        const std::filesystem::path module = effect.library.folder() / "PELLUX64.dll";
        return std::filesystem::exists(module) ? std::make_unique<LoadedLibrary>(module.string()) : nullptr;
    }

    HostedEffect effect;
    std::atomic<int> wrong{0};
};

// The first lives take what the process keeps: connections to the registry, places for threads. The heap has
// room to differ by 64 KiB, for blocks that its allocator keeps at hand for threads and for what the devices
// here note; that is less than seven bytes for each of 10,000 objects. The system opens a handle of its own
// late now and then.
TEST_F(ObjectCycles, LeaveTheProcessAsItWas) {
    const auto held = heldModule();
    liveOnFourThreads(80);
    ASSERT_EQ(wrong, 0);
    const Holdings before = holdings();
    liveOnFourThreads(cycles);
    EXPECT_EQ(wrong, 0);
    EXPECT_EQ(effect.library.canUnloadNow(), result::ok);
    EXPECT_TRUE(waitUntil([&] { return threadCount() <= before.threads; })) << threadCount();
    const Holdings after = holdings();
    EXPECT_LE(after.handles, before.handles + 8);
    EXPECT_LE(after.bytes, before.bytes + (std::size_t{64} << 10));
    EXPECT_EQ(effect.count("Create"), effect.count("Free"));
    EXPECT_GE(effect.count("Create"), cycles / 10);
}

TEST_F(ObjectCycles, OfSeventeenObjectsAtOnceAreAllHeard) {
    constexpr std::size_t total = 17;
    static_cast<void>(threadCountAtRest());
    std::vector<std::unique_ptr<HostedObject>> objects;
    for (std::size_t n = 0; n < total; ++n) {
        objects.push_back(std::make_unique<HostedObject>(effect.library, allClasses[n % allClasses.size()]));
        ASSERT_EQ(effect.initialize(*objects.back()), result::ok);
        ASSERT_EQ(objects.back()->lock(floats(2, 48000.0f + static_cast<float>(n))), result::ok);
    }
    EXPECT_EQ(effect.count("Create"), total);
    const auto playAll = [&](std::size_t thread) {
        for (std::size_t n = thread; n < total; n += 4) {
            for (int buffer = 0; buffer < 10; ++buffer) {
                wrong += objects[n]->play(Samples(20, 1.0f), 2, 2) == Samples(20, 0.5f) ? 0 : 1;
            }
        }
    };
    onFourThreads(playAll);
    EXPECT_EQ(wrong, 0);
    EXPECT_EQ(effect.count("process"), total * 10);
    // The oldest first: nothing of the others goes with it.
    for (std::size_t n = 0; n < total; ++n) {
        EXPECT_EQ(objects[n]->release(), 0U);
        if (n + 1 < total) {
            EXPECT_EQ(objects[n + 1]->play(Samples{1, 1}, 2, 2), (Samples{0.5f, 0.5f}));
            EXPECT_EQ(effect.library.canUnloadNow(), result::no);
        }
    }
    EXPECT_EQ(effect.count("Free"), total);
}

TEST_F(ObjectCycles, BesideEachOtherKeepTheirStreamsApart) {
    HostedObject stream(effect.library, streamClass);
    HostedObject second(effect.library, streamClass);
    ASSERT_EQ(stream.lock(floats(1, 48000, 0x4), floats(2)), result::ok);
    ASSERT_EQ(effect.initialize(second), result::ok);
    ASSERT_EQ(second.lock(floats(2)), result::ok);
    EXPECT_EQ(stream.lock(floats(2)), result::isLocked);
    EXPECT_EQ(stream.unlock(), result::ok);
    EXPECT_EQ(second.play(Samples{1, 1}, 2, 2), (Samples{0.5f, 0.5f}));
    EXPECT_EQ(stream.release(), 0U);
    EXPECT_EQ(second.unlock(), result::ok);
}

TEST_F(ObjectCycles, MayEndOnAnotherThreadThanTheyBegan) {
    const std::size_t threads = threadCountAtRest();
    auto object = std::make_unique<HostedObject>(effect.library, modeClass);
    ASSERT_EQ(effect.initialize(*object), result::ok);
    ASSERT_EQ(object->lock(floats(2)), result::ok);
    std::thread([&] {
        const platform::ComApartment apartment;
        EXPECT_EQ(object->play(Samples{1, 1}, 2, 2), (Samples{0.5f, 0.5f}));
        EXPECT_EQ(object->release(), 0U);
    }).join();
    EXPECT_EQ(effect.library.canUnloadNow(), result::ok);
    EXPECT_TRUE(waitUntil([&] { return threadCount() <= threads; }));
}

}  // namespace
}  // namespace korva::test
