#include "platform/deletion_notice.h"

#include <gtest/gtest.h>

#include <array>

#include "platform/registry.h"
#include "platform/wait_handles.h"
#include "tests/support/own_registry.h"

namespace korva::platform {
namespace {

TEST(DeletionNotice, TellsWhatTheDeletionOfAnArmedKeyDoes) {
    const test::OwnRegistry registry;
    const RegistryKey root = RegistryKey::root(RegistryRoot::localMachine);
    const std::string path = registry.key() + "\\armed";
    RegistryKey key;
    ASSERT_EQ(root.create(path, RegistryAccess::read, key), 0);
    RegistryWatch watch;
    ASSERT_EQ(watch.arm(key), 0);
    ASSERT_EQ(root.deleteKey(path), 0);

    constexpr std::int64_t longEnoughMs = 3000;
    const std::array handles{watch.handle()};
    EXPECT_EQ(waitForHandles(handles, longEnoughMs) == 0, tellsOfKeyDeletion());
    EXPECT_EQ(watch.arm(key), registry_result::keyDeleted);
}

}  // namespace
}  // namespace korva::platform
