#include "params/property_set_path.h"

#include <gtest/gtest.h>

namespace korva::params {
namespace {

TEST(PropertySetPath, NamesTheEndpointAndTheSet) {
    EXPECT_EQ(propertySetPath("{0.0.0.00000000}.{1}", property_set::user),
              "Software\\Veltrane\\APO\\{0.0.0.00000000}.{1}\\FxProperties\\User");
    EXPECT_EQ(propertySetPath("e", property_set::standard),
              "Software\\Veltrane\\APO\\e\\FxProperties\\Default");
    EXPECT_EQ(propertySetPath("e", property_set::temporary),
              "Software\\Veltrane\\APO\\e\\FxProperties\\Volatile");
}

TEST(PropertySetPath, AllSetsOfAnEndpointAreBelowOneKey) {
    EXPECT_EQ(propertySetsPath("e"), "Software\\Veltrane\\APO\\e");
    EXPECT_EQ(propertySetsPath("a/b"), "");
    EXPECT_EQ(propertySetsPath("a\\b"), "");
}

TEST(PropertySetPath, ASlashInEitherNameMakesItEmpty) {
    for (const char* const bad : {"\\", "/", "a\\b", "a/b", "\\a", "a/"}) {
        EXPECT_EQ(propertySetPath(bad, "User"), "") << bad;
        EXPECT_EQ(propertySetPath("e", bad), "") << bad;
    }
}

TEST(PropertySetPath, AnEmptyIdentifierStillMakesAPath) {
    EXPECT_EQ(propertySetPath("", "User"), "Software\\Veltrane\\APO\\\\FxProperties\\User");
}

}  // namespace
}  // namespace korva::params
