// How a store watcher ends, whatever its thread is doing.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <string>
#include <thread>

#include "framework/wait_any.h"
#include "params/fx_store_watcher.h"
#include "params/property_set_path.h"
#include "tests/params/watcher_host.h"
#include "tests/support/one_time_gate.h"
#include "tests/support/own_endpoint.h"
#include "tests/support/registry_numbers.h"
#include "tests/support/wait_until.h"

namespace korva::params {
namespace {

using namespace std::chrono_literals;
using framework::create;
using framework::Held;
using framework::Ref;
using framework::WaitableCounter;
using platform::RegistryKey;
using test::OwnEndpoint;
using test::setNumber;
using test::waitUntil;
using test::WatcherHost;

/// Writes until it is told to end.
class Writer {
public:
    explicit Writer(RegistryKey written) : key(std::move(written)) {
        thread = std::thread([this] {
            for (std::uint32_t i = 0; !isDone.load(); ++i) {
                EXPECT_TRUE(setNumber(key, "a", i));
                ++writes;
            }
        });
    }
    ~Writer() {
        isDone = true;
        thread.join();
    }
    Writer(const Writer&) = delete;
    Writer& operator=(const Writer&) = delete;

    /// Until it has written once more from now on.
    void waitForWrite() const {
        const std::uint32_t seen = writes.load();
        EXPECT_TRUE(waitUntil([&] { return writes.load() != seen; }));
    }

private:
    RegistryKey key;
    std::atomic<bool> isDone{false};
    std::atomic<std::uint32_t> writes{0};
    std::thread thread;
};

class FxStoreWatcherClose : public testing::Test {
protected:
    /// Whether `host` closes while `Writer` writes on and on.
    static bool closesInTime(WatcherHost& host) {
        test::OneTimeGate isClosed;
        std::thread closer([&] {
            host.close();
            isClosed.open();
        });
        const bool inTime = isClosed.pass();
        closer.join();
        return inTime;
    }

    OwnEndpoint endpoint;
    const std::string path = endpoint.setPath(property_set::user);
};

TEST_F(FxStoreWatcherClose, WhileTheKeyIsMissingItTakesNoLookMore) {
    const auto begin = std::chrono::steady_clock::now();
    for (int i = 0; i < 10; ++i) {
        WatcherHost host(path, 1);
        host.close();
    }
    EXPECT_LT(std::chrono::steady_clock::now() - begin, 5s) << "waits out its second each time";
}

TEST_F(FxStoreWatcherClose, WhileTheKeyIsQuietItComesAtOnce) {
    static_cast<void>(endpoint.makeSet(property_set::user));
    WatcherHost host(path, 1);
    EXPECT_TRUE(closesInTime(host));
}

TEST_F(FxStoreWatcherClose, WhileTheKeyIsWrittenToAllTheTimeItDoesntWaitForAPause) {
    WatcherHost host(path, 100);
    const Writer writer(endpoint.makeSet(property_set::user));
    for (int i = 0; i < 100; ++i) {
        writer.waitForWrite();
    }
    EXPECT_TRUE(closesInTime(host));
}

TEST_F(FxStoreWatcherClose, InALongPauseItComesAtOnce) {
    const RegistryKey key = endpoint.makeSet(property_set::user);
    WatcherHost host(path, 86'400'000 * 40LL);
    ASSERT_TRUE(setNumber(key, "a", 1));
    EXPECT_TRUE(closesInTime(host));
    EXPECT_EQ(host.publications(), 0);
}

/// The owner is busy, so the watch's thread waits for it in the middle of a publication, more often than not.
TEST_F(FxStoreWatcherClose, OnTheOwnersThreadWhileTheWatchPublishesBothGoOn) {
    const RegistryKey key = endpoint.makeSet(property_set::user);
    const framework::DispatcherUse owner = framework::Dispatcher::start();
    for (std::uint32_t i = 0; i < 300; ++i) {
        owner->runSynchronously([&] {
            auto watcher = Held<FxStoreWatcher>::first(create<FxStoreWatcher>(path, 0));
            EXPECT_TRUE(setNumber(key, "a", i));
            for (std::uint32_t spin = 0; spin < i % 30; ++spin) {
                std::this_thread::yield();
            }
            if (i % 3 == 0) {
                std::this_thread::sleep_for(std::chrono::milliseconds(1 + i % 5));
            }
            watcher = nullptr;
        });
    }
}

TEST_F(FxStoreWatcherClose, AListenerThatStaysHearsNothingOnceItHasBegun) {
    const RegistryKey key = endpoint.makeSet(property_set::user);
    const framework::DispatcherUse owner = framework::Dispatcher::start();
    struct Listener {
        static void after(void* context, framework::ListenedTo&, framework::ActiveObject& watcher,
                          const void*, void*, const void*, framework::Reason) {
            auto& self = *static_cast<Listener*>(context);
            ++(watcher.closedCounter()->get() == 0 ? self.before : self.late);
        }
        int before = 0;
        int late = 0;
    } listener;
    for (std::uint32_t i = 0; i < 100; ++i) {
        owner->runSynchronously([&] {
            auto watcher = Held<FxStoreWatcher>::first(create<FxStoreWatcher>(path, 0));
            watcher->published.subscribe(&listener, nullptr, &Listener::after);
            EXPECT_TRUE(setNumber(key, "a", i));
            std::this_thread::sleep_for(2ms);
            watcher = nullptr;
        });
    }
    EXPECT_EQ(listener.late, 0);
}

TEST_F(FxStoreWatcherClose, ByAListenerOfTheWatcherDoesntWaitForItsThreadWhichEndsAllTheSame) {
    const RegistryKey key = endpoint.makeSet(property_set::user);
    const framework::DispatcherUse owner = framework::Dispatcher::start();
    const std::uint32_t threadsBefore = framework::liveThreadCount().get();
    struct Listener {
        static void after(void* context, framework::ListenedTo&, framework::ActiveObject&, const void*, void*,
                          const void*, framework::Reason) {
            static_cast<Listener*>(context)->watcher = nullptr;
        }
        Held<FxStoreWatcher> watcher;
    } listener;
    Ref<WaitableCounter> destroyed;
    owner->runSynchronously([&] {
        listener.watcher = Held<FxStoreWatcher>::first(create<FxStoreWatcher>(path, 0));
        destroyed = listener.watcher->destroyedCounter();
        listener.watcher->published.subscribe(&listener, nullptr, &Listener::after);
    });
    ASSERT_TRUE(setNumber(key, "a", 1));
    EXPECT_TRUE(waitUntil([&] { return destroyed->get() != 0; }));
    EXPECT_TRUE(waitUntil([&] { return framework::liveThreadCount().get() == threadsBefore; }));
}

TEST_F(FxStoreWatcherClose, AWatcherThatIsOnlyReleasedEndsItsThread) {
    const RegistryKey key = endpoint.makeSet(property_set::user);
    const framework::DispatcherUse owner = framework::Dispatcher::start();
    const std::uint32_t threadsBefore = framework::liveThreadCount().get();
    for (std::uint32_t i = 0; i < 50; ++i) {
        Ref<FxStoreWatcher> watcher;
        owner->runSynchronously([&] { watcher = create<FxStoreWatcher>(path, 0); });
        const Ref<WaitableCounter> destroyed = watcher->destroyedCounter();
        EXPECT_TRUE(setNumber(key, "a", i));  // it may publish while it goes
        watcher = nullptr;
        ASSERT_TRUE(waitUntil([&] { return destroyed->get() != 0; })) << i;
        EXPECT_EQ(framework::liveThreadCount().get(), threadsBefore);
    }
}

TEST_F(FxStoreWatcherClose, FromAnotherThreadReachesTheOwners) {
    static_cast<void>(endpoint.makeSet(property_set::user));
    const framework::DispatcherUse owner = framework::Dispatcher::start();
    const std::uint32_t threadsBefore = framework::liveThreadCount().get();
    Held<FxStoreWatcher> watcher;
    owner->runSynchronously([&] { watcher = Held<FxStoreWatcher>::first(create<FxStoreWatcher>(path, 1)); });
    const Ref<WaitableCounter> destroyed = watcher->destroyedCounter();
    watcher = nullptr;
    ASSERT_TRUE(waitUntil([&] { return destroyed->get() != 0; }));
    EXPECT_EQ(framework::liveThreadCount().get(), threadsBefore);
}

}  // namespace
}  // namespace korva::params
