#include "platform/stored_values.h"

#include <gtest/gtest.h>

#include "tests/platform/registry_test.h"

namespace korva::platform {
namespace {

TEST(StoredValues, KeepAStringWithItsTerminator) {
    const RegistryValue value = stringValue(toWide("a\xC3\xA4"));
    EXPECT_EQ(value.type, registry_type::string);
    EXPECT_EQ(value.data, bytes({'a', 0, 0xE4, 0, 0, 0}));
    EXPECT_EQ(stringValue({}).data, bytes({0, 0}));
}

TEST(StoredValues, KeepANumberLowestByteFirst) {
    const RegistryValue value = numberValue(0x80000001U);
    EXPECT_EQ(value.type, registry_type::dword);
    EXPECT_EQ(value.data, bytes({1, 0, 0, 0x80}));
}

}  // namespace
}  // namespace korva::platform
