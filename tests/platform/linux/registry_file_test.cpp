// The registry as a file.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "platform/registry.h"
#include "tests/support/own_registry.h"

namespace korva::platform {
namespace {

using namespace registry_result;

std::vector<std::byte> bytesOf(std::string_view text) {
    const auto* const begin = reinterpret_cast<const std::byte*>(text.data());
    return {begin, begin + text.size()};
}

class RegistryFile : public testing::Test {
protected:
    RegistryKey newKey(const std::string& name) {
        RegistryKey key;
        EXPECT_EQ(machine.create(registry.key() + "\\" + name, RegistryAccess::readWrite, key), success);
        return key;
    }

    test::OwnRegistry registry;
    RegistryKey machine = RegistryKey::root(RegistryRoot::localMachine);
};

TEST_F(RegistryFile, GivesNamesInTheOrderInWhichTheyCame) {
    const RegistryKey key = newKey("a");
    for (const char* name : {"zebra", "Apple", "mango", "APPLE"}) {
        ASSERT_EQ(key.setValue(name, registry_type::binary, bytesOf(name)), success);
        RegistryKey below;
        ASSERT_EQ(key.create(name, RegistryAccess::read, below), success);
    }
    for (std::uint32_t i = 0; const char* expected : {"zebra", "Apple", "mango"}) {
        std::string name;
        ASSERT_EQ(key.valueName(i, 512, name), success);
        EXPECT_EQ(name, expected);
        ASSERT_EQ(key.keyName(i++, name), success);
        EXPECT_EQ(name, expected);
    }
    std::string name;
    EXPECT_EQ(key.valueName(3, 512, name), noMoreItems);
    EXPECT_EQ(key.keyName(3, name), noMoreItems);
    RegistryValue value;
    ASSERT_EQ(key.readValue("apple", value), success);
    EXPECT_EQ(value.data, bytesOf("APPLE"));
}

TEST_F(RegistryFile, NeverGivesAHandleTwice) {
    const RegistryKey parent = newKey("a");
    std::vector<std::uintptr_t> handles;
    for (int i = 0; i < 100; ++i) {
        RegistryKey key;
        ASSERT_EQ(parent.open("", RegistryAccess::read, key), success);
        handles.push_back(key.handle());
    }
    std::sort(handles.begin(), handles.end());
    EXPECT_EQ(std::adjacent_find(handles.begin(), handles.end()), handles.end());
}

}  // namespace
}  // namespace korva::platform
