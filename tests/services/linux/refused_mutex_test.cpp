// An instance where the system has no mutex for it.
#include <gtest/gtest.h>

#include <fstream>

#include "platform/registry.h"
#include "services/instance_key.h"
#include "tests/support/own_registry.h"
#include "tests/support/telemetry_base.h"

namespace korva::services {
namespace {

TEST(InstanceKeyWithoutAMutex, IsNoneSinceItWouldPassForADeadOnes) {
    const test::OwnRegistry registry;
    const test::TelemetryBase base;
    std::ofstream(platform::registryPlace() + ".run") << "in place of the folder of mutexes";
    InstanceKey key;
    EXPECT_FALSE(key.isOpen());
    EXPECT_EQ(key.writeDword("value", 1), platform::registry_result::success);
    EXPECT_TRUE(base.instances().empty());
}

}  // namespace
}  // namespace korva::services
