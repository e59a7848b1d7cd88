#include "platform/system_version.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "platform/registry.h"
#include "platform/unicode.h"

namespace korva::platform {
namespace {

/// A text value of the key in which the system says what it is.
std::string ofCurrentVersion(const char* name) {
    RegistryKey key;
    RegistryValue value;
    EXPECT_EQ(RegistryKey::root(RegistryRoot::localMachine)
                  .open("Software\\Microsoft\\Windows NT\\CurrentVersion", RegistryAccess::read, key),
              0);
    EXPECT_EQ(key.readValue(name, value), 0);
    const auto* const units = reinterpret_cast<const WCHAR*>(value.data.data());
    std::string text = toUtf8(WideView(units, value.data.size() / sizeof(WCHAR)));
    text.resize(std::min(text.find('\0'), text.size()));
    return text;
}

TEST(SystemVersion, HasTheBuildThatTheSystemTellsInItsRegistry) {
    EXPECT_EQ(std::to_string(systemVersion().build), ofCurrentVersion("CurrentBuildNumber"));
}

TEST(SystemVersion, IsNoneFromBeforeTheFunctionsThatAreUsed) {
    EXPECT_GE(systemVersion().major, 6U);
}

}  // namespace
}  // namespace korva::platform
