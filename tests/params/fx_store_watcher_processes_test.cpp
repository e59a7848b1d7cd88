// A store watcher, and another process that writes.
#include <gtest/gtest.h>

#include <atomic>
#include <cstdint>
#include <string>

#include "params/fx_store_watcher.h"
#include "params/property_set_path.h"
#include "tests/params/watcher_host.h"
#include "tests/support/own_endpoint.h"
#include "tests/support/registry_numbers.h"
#include "tests/support/run_program.h"
#include "tests/support/wait_until.h"

namespace korva::params {
namespace {

TEST(FxStoreWatcherProcesses, AChangeByAnotherProcessIsPublished) {
    const test::OwnEndpoint endpoint;
    const std::string path = endpoint.setPath(property_set::user);
    static_cast<void>(endpoint.makeSet(property_set::user));
    std::atomic<std::uint32_t> seen{0};
    test::WatcherHost host(path, 1, [&](const platform::RegistryKey& changed) {
        seen = test::numberOf(changed, "level").value_or(0);
    });
    ASSERT_EQ(test::runProgram(KORVA_REGISTRY_WRITER, {path, "level", "41"}), 0);
    EXPECT_TRUE(test::waitUntil([&] { return seen.load() == 41; }));
    ASSERT_EQ(test::runProgram(KORVA_REGISTRY_WRITER, {path, "level", "42"}), 0);
    EXPECT_TRUE(test::waitUntil([&] { return seen.load() == 42; }));
}

TEST(FxStoreWatcherProcesses, AKeyThatAnotherProcessMakesIsPublished) {
    const test::OwnEndpoint endpoint;
    const std::string path = endpoint.setPath(property_set::user);
    std::atomic<std::uint32_t> seen{0};
    test::WatcherHost host(path, 1, [&](const platform::RegistryKey& changed) {
        seen = test::numberOf(changed, "level").value_or(0);
    });
    ASSERT_EQ(test::runProgram(KORVA_REGISTRY_WRITER, {path, "level", "41"}), 0);
    EXPECT_TRUE(test::waitUntil([&] { return seen.load() == 41; }));
}

}  // namespace
}  // namespace korva::params
