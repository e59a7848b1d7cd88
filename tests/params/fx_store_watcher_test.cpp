#include "params/fx_store_watcher.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "params/property_set_path.h"
#include "tests/params/watcher_host.h"
#include "tests/support/one_time_gate.h"
#include "tests/support/own_endpoint.h"
#include "tests/support/processor_time.h"
#include "tests/support/registry_numbers.h"
#include "tests/support/wait_until.h"

namespace korva::params {
namespace {

using namespace std::chrono_literals;
using platform::RegistryKey;
using test::numberOf;
using test::OwnEndpoint;
using test::setNumber;
using test::waitUntil;
using test::WatcherHost;

constexpr std::int64_t usualDelayMs = 1;
/// Longer than anything that a test does without waiting.
constexpr std::int64_t longDelayMs = 1000;

class FxStoreWatcherTest : public testing::Test {
protected:
    OwnEndpoint endpoint;
    const std::string path = endpoint.setPath(property_set::user);
};

std::chrono::milliseconds since(std::chrono::steady_clock::time_point begin) {
    return std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - begin);
}

TEST_F(FxStoreWatcherTest, AKeyThatIsThereIsPublishedFromTheStart) {
    const RegistryKey key = endpoint.makeSet(property_set::user);
    ASSERT_TRUE(setNumber(key, "level", 7));
    WatcherHost host(path, usualDelayMs);
    host.onOwner([&] { EXPECT_EQ(numberOf(host.watcher->published.value(), "level"), 7U); });
}

TEST_F(FxStoreWatcherTest, ThePublishedKeyCantBeWrittenTo) {
    static_cast<void>(endpoint.makeSet(property_set::user));
    WatcherHost host(path, usualDelayMs);
    host.onOwner([&] { EXPECT_FALSE(setNumber(host.watcher->published.value(), "level", 7)); });
}

TEST_F(FxStoreWatcherTest, AChangeIsPublishedWithAKeyThatShowsIt) {
    const RegistryKey key = endpoint.makeSet(property_set::user);
    std::optional<std::uint32_t> seen;
    WatcherHost host(path, usualDelayMs, [&](const RegistryKey& changed) { seen = numberOf(changed, "a"); });
    ASSERT_TRUE(setNumber(key, "a", 5));
    ASSERT_TRUE(waitUntil([&] { return host.publications() == 1; }));
    host.onOwner([&] { EXPECT_EQ(seen, 5U); });
}

TEST_F(FxStoreWatcherTest, AChangeBeforeItsThreadBeginsIsPublished) {
    const RegistryKey key = endpoint.makeSet(property_set::user);
    const framework::DispatcherUse owner = framework::Dispatcher::start();
    framework::Held<FxStoreWatcher> watcher;
    RegistryKey first;
    // No task of the owner's runs meanwhile.
    owner->runSynchronously([&] {
        watcher =
            framework::Held<FxStoreWatcher>::first(framework::create<FxStoreWatcher>(path, usualDelayMs));
        first = watcher->published.value();
        EXPECT_TRUE(setNumber(key, "a", 5));
    });
    EXPECT_TRUE(waitUntil([&] { return !(watcher->published.read() == first); }));
    owner->runSynchronously([&] { watcher = nullptr; });
}

TEST_F(FxStoreWatcherTest, ClosedBeforeItsThreadBeginsItHasNone) {
    const framework::DispatcherUse owner = framework::Dispatcher::start();
    const std::uint32_t before = framework::liveThreadCount().get();
    owner->runSynchronously([&] { framework::create<FxStoreWatcher>(path, usualDelayMs)->close(); });
    owner->post([] {}).waitUntilDone();
    EXPECT_EQ(framework::liveThreadCount().get(), before);
}

TEST_F(FxStoreWatcherTest, AChangeBelowTheKeyIsPublished) {
    const RegistryKey key = endpoint.makeSet(property_set::user);
    RegistryKey below;
    ASSERT_EQ(key.create("sub", platform::RegistryAccess::readWrite, below), 0);
    WatcherHost host(path, usualDelayMs);
    ASSERT_TRUE(setNumber(below, "a", 5));
    EXPECT_TRUE(waitUntil([&] { return host.publications() != 0; }));
}

TEST_F(FxStoreWatcherTest, AValueThatIsDeletedIsAChange) {
    const RegistryKey key = endpoint.makeSet(property_set::user);
    ASSERT_TRUE(setNumber(key, "a", 5));
    WatcherHost host(path, usualDelayMs);
    ASSERT_EQ(key.deleteValue("a"), 0);
    EXPECT_TRUE(waitUntil([&] { return host.publications() != 0; }));
}

TEST_F(FxStoreWatcherTest, ABurstOfWritesGivesOnePublicationAfterTheLast) {
    const RegistryKey key = endpoint.makeSet(property_set::user);
    std::optional<std::uint32_t> seen;
    WatcherHost host(path, longDelayMs, [&](const RegistryKey& changed) { seen = numberOf(changed, "a"); });
    for (std::uint32_t i = 0; i <= 50; ++i) {
        ASSERT_TRUE(setNumber(key, "a", i));
    }
    ASSERT_TRUE(waitUntil([&] { return host.publications() != 0; }));
    host.onOwner([&] { EXPECT_EQ(seen, 50U); });
    // Whatever the burst had left over would come before this.
    ASSERT_TRUE(setNumber(key, "a", 51));
    ASSERT_TRUE(waitUntil([&] {
        bool isSeen = false;
        host.onOwner([&] { isSeen = seen == 51U; });
        return isSeen;
    }));
    EXPECT_EQ(host.publications(), 2);
}

TEST_F(FxStoreWatcherTest, ManyWritesGiveFarFewerPublicationsAndTheLastOfThemShowsTheLastWrite) {
    constexpr std::uint32_t writes = 2000;
    const RegistryKey key = endpoint.makeSet(property_set::user);
    std::atomic<std::uint32_t> seen{0};
    WatcherHost host(path, usualDelayMs,
                     [&](const RegistryKey& changed) { seen = numberOf(changed, "a").value_or(0); });
    for (std::uint32_t i = 1; i <= writes; ++i) {
        ASSERT_TRUE(setNumber(key, "a", i));
    }
    EXPECT_TRUE(waitUntil([&] { return seen.load() == writes; }));
    EXPECT_LT(host.publications(), static_cast<int>(writes / 4));
}

TEST_F(FxStoreWatcherTest, EachChangeThatFollowsAPublicationGetsOneOfItsOwnSoonWithAnotherKey) {
    constexpr int changes = 20;
    const RegistryKey key = endpoint.makeSet(property_set::user);
    WatcherHost host(path, usualDelayMs);
    const auto begin = std::chrono::steady_clock::now();
    for (int i = 1; i <= changes; ++i) {
        ASSERT_TRUE(setNumber(key, "a", static_cast<std::uint32_t>(i)));
        ASSERT_TRUE(waitUntil([&] { return host.publications() == i; })) << i;
    }
    EXPECT_LT(since(begin), 10s) << "a second each";

    const std::vector<RegistryKey> keys = host.keys();
    ASSERT_EQ(keys.size(), changes);
    for (std::size_t i = 1; i < keys.size(); ++i) {
        EXPECT_NE(keys[i].handle(), keys[i - 1].handle()) << i;
    }
}

TEST_F(FxStoreWatcherTest, AKeyThatIsMadeLaterIsPublishedWithTheValuesThatItCameWith) {
    std::atomic<std::uint32_t> seen{0};
    WatcherHost host(path, usualDelayMs,
                     [&](const RegistryKey& changed) { seen = numberOf(changed, "a").value_or(0); });
    host.onOwner([&] { EXPECT_FALSE(host.watcher->published.value()); });
    const RegistryKey key = endpoint.makeSet(property_set::user);
    ASSERT_TRUE(setNumber(key, "a", 5));
    EXPECT_TRUE(waitUntil([&] { return seen.load() == 5; }));
    ASSERT_TRUE(setNumber(key, "a", 6));
    EXPECT_TRUE(waitUntil([&] { return seen.load() == 6; }));
}

TEST_F(FxStoreWatcherTest, PublicationsResumeAboutASecondAfterADeletedKeyIsBack) {
    static_cast<void>(endpoint.makeSet(property_set::user));
    std::atomic<std::uint32_t> seen{0};
    WatcherHost host(path, usualDelayMs,
                     [&](const RegistryKey& changed) { seen = numberOf(changed, "a").value_or(0); });
    for (std::uint32_t i = 1; i <= 3; ++i) {
        endpoint.deleteSet(property_set::user);
        const RegistryKey key = endpoint.makeSet(property_set::user);
        const auto begin = std::chrono::steady_clock::now();
        ASSERT_TRUE(setNumber(key, "a", i));
        ASSERT_TRUE(waitUntil([&] { return seen.load() == i; })) << i;
        EXPECT_LT(since(begin), 3s);
    }
}

TEST_F(FxStoreWatcherTest, EveryChangeOfAKeyThatCameBackIsPublished) {
    static_cast<void>(endpoint.makeSet(property_set::user));
    std::atomic<std::uint32_t> seen{0};
    WatcherHost host(path, usualDelayMs,
                     [&](const RegistryKey& changed) { seen = numberOf(changed, "a").value_or(0); });
    endpoint.deleteSet(property_set::user);
    const RegistryKey key = endpoint.makeSet(property_set::user);
    for (std::uint32_t i = 1; i <= 10; ++i) {
        ASSERT_TRUE(setNumber(key, "a", i));
        ASSERT_TRUE(waitUntil([&] { return seen.load() == i; })) << i;
    }
}

TEST_F(FxStoreWatcherTest, AMissingKeyIsNeverPublished) {
    static_cast<void>(endpoint.makeSet(property_set::user));
    bool wasEmpty = false;
    WatcherHost host(path, usualDelayMs, [&](const RegistryKey& changed) { wasEmpty |= !changed; });
    endpoint.deleteSet(property_set::user);
    const RegistryKey key = endpoint.makeSet(property_set::user);
    ASSERT_TRUE(waitUntil([&] { return host.publications() != 0; }));
    host.onOwner([&] { EXPECT_FALSE(wasEmpty); });
}

TEST_F(FxStoreWatcherTest, OfAnEmptyPathNothingIsPublished) {
    const RegistryKey key = endpoint.makeSet(property_set::user);
    WatcherHost empty("", 0);
    WatcherHost other(path, longDelayMs);  // hears of the change by far later
    empty.onOwner([&] { EXPECT_FALSE(empty.watcher->published.value()); });
    ASSERT_TRUE(setNumber(key, "a", 5));
    ASSERT_TRUE(waitUntil([&] { return other.publications() != 0; }));
    EXPECT_EQ(empty.publications(), 0);
    empty.onOwner([&] { EXPECT_FALSE(empty.watcher->published.value()); });
}

TEST_F(FxStoreWatcherTest, AChangeOfOneSetIsNoneOfAnother) {
    const RegistryKey user = endpoint.makeSet(property_set::user);
    const RegistryKey standard = endpoint.makeSet(property_set::standard);
    WatcherHost ofUser(path, longDelayMs);
    WatcherHost ofStandard(endpoint.setPath(property_set::standard), 0);
    ASSERT_TRUE(setNumber(user, "a", 5));
    ASSERT_TRUE(waitUntil([&] { return ofUser.publications() == 1; }));
    EXPECT_EQ(ofStandard.publications(), 0);
    ASSERT_TRUE(setNumber(standard, "a", 5));
    ASSERT_TRUE(waitUntil([&] { return ofStandard.publications() == 1; }));
    EXPECT_EQ(ofUser.publications(), 1);
}

TEST_F(FxStoreWatcherTest, TwoWatchersOfOneKeyBothHearOfAChange) {
    const RegistryKey key = endpoint.makeSet(property_set::user);
    WatcherHost first(path, usualDelayMs);
    WatcherHost second(path, usualDelayMs);
    ASSERT_TRUE(setNumber(key, "a", 5));
    EXPECT_TRUE(waitUntil([&] { return first.publications() == 1 && second.publications() == 1; }));
}

TEST_F(FxStoreWatcherTest, IdleWatchersUseNoProcessorTime) {
    static_cast<void>(endpoint.makeSet(property_set::user));
    WatcherHost ofKey(path, usualDelayMs);
    WatcherHost ofMissing(endpoint.setPath(property_set::standard), usualDelayMs);
    const std::int64_t before = test::processorTimeMs();
    test::OneTimeGate never;
    EXPECT_FALSE(never.passWithin(2s));
    EXPECT_LT(test::processorTimeMs() - before, 60);
}

}  // namespace
}  // namespace korva::params
