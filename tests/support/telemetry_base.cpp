#include "tests/support/telemetry_base.h"

#include <gtest/gtest.h>

#include <cstdint>

namespace korva::test {

using platform::RegistryAccess;
using platform::RegistryKey;
using platform::RegistryRoot;

namespace {

constexpr const char* base = "Software\\Kestrelwright";
constexpr const char* instancesPath = "Software\\Kestrelwright\\APO\\Instances";

RegistryKey machine() {
    return RegistryKey::root(RegistryRoot::localMachine);
}

}  // namespace

TelemetryBase::TelemetryBase() {
    RegistryKey made;
    EXPECT_EQ(machine().create(base, RegistryAccess::readWrite, made), 0);
}

TelemetryBase::~TelemetryBase() {
    static_cast<void>(machine().deleteTree(base));
}

std::vector<std::string> TelemetryBase::instances() const {
    std::vector<std::string> names;
    RegistryKey key;
    if (machine().open(instancesPath, RegistryAccess::read, key) == 0) {
        std::string name;
        for (std::uint32_t index = 0; key.keyName(index, name) == 0; ++index) {
            names.push_back(name);
        }
    }
    return names;
}

RegistryKey TelemetryBase::open(const std::string& name) const {
    RegistryKey key;
    static_cast<void>(machine().open(pathOf(name), RegistryAccess::readWrite, key));
    return key;
}

std::string TelemetryBase::pathOf(const std::string& name) {
    return std::string(instancesPath).append("\\").append(name);
}

}  // namespace korva::test
