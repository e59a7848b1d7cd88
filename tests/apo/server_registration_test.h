// What the server writes to the registry, and tests that begin and end without it.
#pragma once

#include <gtest/gtest.h>

#include <map>
#include <string>
#include <vector>

#include "apo/registration/server_registration.h"
#include "platform/stored_values.h"
#include "tests/support/own_registry.h"
#include "tests/support/registry_tree.h"

namespace korva::apo {

using Lines = std::vector<std::string>;

inline constexpr auto classesRoot = platform::RegistryRoot::classesRoot;

/// A key of somebody else's, with a value.
inline void putOthers(const std::string& path, const std::string& name) {
    const platform::RegistryValue value = platform::numberValue(1);
    platform::RegistryKey made;
    ASSERT_EQ(
        platform::RegistryKey::root(classesRoot).create(path, platform::RegistryAccess::readWrite, made), 0);
    ASSERT_EQ(made.setValue(name, value.type, value.data), 0);
}

/// The keys that may not be there without the server.
inline const std::vector<std::string> serverKeys = {
    "AppID\\KORVA.DLL",
    "AppID\\{0A21D954-674A-4C09-806E-DB4FBE8F199C}",
    "AudioEngine\\AudioProcessingObjects\\{8F3540DF-18B0-4943-B916-D4A79801587D}",
    "AudioEngine\\AudioProcessingObjects\\{C26AD82E-B1CB-4BDF-87E9-CACD7FD6C6FD}",
    "AudioEngine\\AudioProcessingObjects\\{F71CA881-A2E0-43D1-9B8D-CEF14AA0D58D}",
    "CLSID\\{8F3540DF-18B0-4943-B916-D4A79801587D}",
    "CLSID\\{C26AD82E-B1CB-4BDF-87E9-CACD7FD6C6FD}",
    "CLSID\\{F71CA881-A2E0-43D1-9B8D-CEF14AA0D58D}",
    "TypeLib\\{48E3D58C-375D-4140-8990-8907E4F9418F}",
};

/// Which of them are there.
[[nodiscard]] inline Lines serverKeysThere() {
    Lines there;
    for (const std::string& key : serverKeys) {
        if (test::hasKey(classesRoot, key)) {
            there.push_back(key);
        }
    }
    return there;
}

/// All lines of those that are there, with their paths.
[[nodiscard]] inline Lines serverLines() {
    Lines lines;
    for (const std::string& key : serverKeysThere()) {
        for (const std::string& line : test::treeLines(classesRoot, key)) {
            lines.push_back(key + ": " + line);
        }
    }
    return lines;
}

class ServerRegistration : public testing::Test {
protected:
    void SetUp() override { ASSERT_EQ(serverKeysThere(), Lines{}); }
    void TearDown() override { static_cast<void>(unregisterServer()); }

    test::OwnRegistry own;
};

}  // namespace korva::apo
