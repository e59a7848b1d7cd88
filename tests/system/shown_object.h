// An audio object on a machine where instances show themselves.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "platform/registry.h"
#include "tests/support/registry_numbers.h"
#include "tests/support/shown_values.h"
#include "tests/support/telemetry_base.h"
#include "tests/support/wait_until.h"
#include "tests/system/support/hosted_effect.h"

namespace korva::test {

/// Whatever the module may be asked for.
inline const std::string moduleAnswers =
    "data:-1:-32=07000300,data:-1:-33=11000000,data:-1:-34=22000000,"
    "data:-1:-36=0000803f0000003f00000000000000000000000000000000000000000000803e,"
    "data:-1:-37=0000003f00000000000000000000000000000000000000000000000000000000,"
    "data:-1:-39=39000000,data:-1:-43=010000000200000003000000,data:-1:-44=040000000500000006000000";

/// With an endpoint that has all three sets of properties, so that nobody looks for one that is missing.
class ShownObjectTest : public testing::Test {
protected:
    ShownObjectTest() {
        effect.install(modeClass);
        effect.recording.noteSamples(0);
        for (const char* const set : {"Default", "Volatile"}) {
            platform::RegistryKey made;
            EXPECT_EQ(machine().create(setPath(set), platform::RegistryAccess::readWrite, made), 0);
        }
    }

    [[nodiscard]] static platform::RegistryKey machine() {
        return platform::RegistryKey::root(platform::RegistryRoot::localMachine);
    }
    [[nodiscard]] std::string setPath(const std::string& set) const {
        return "Software\\Veltrane\\APO\\" + effect.endpoint.id() + "\\FxProperties\\" + set;
    }

    /// The only instance's name.
    [[nodiscard]] std::string name() const {
        const std::vector<std::string> names = base.instances();
        EXPECT_EQ(names.size(), 1U);
        return names.empty() ? std::string() : names.front();
    }
    [[nodiscard]] platform::RegistryKey key() const { return base.open(name()); }
    [[nodiscard]] std::string valueOf(const std::string& value) const { return shownValuesOf(key())[value]; }
    [[nodiscard]] bool becomes(const std::string& value, const std::string& shown) const {
        return waitUntil([&] { return valueOf(value) == shown; });
    }

    void begin(HostedObject& object) {
        ASSERT_EQ(effect.initialize(object), result::ok);
        ASSERT_EQ(object.lock(floats(2)), result::ok);
    }
    static void expectSound(HostedObject& object) {
        EXPECT_EQ(object.play(std::vector<float>{1, 1}, 2, 2), (std::vector<float>{0.5f, 0.5f}));
    }

    HostedEffect effect{moduleAnswers};
    const TelemetryBase base;
};

}  // namespace korva::test
