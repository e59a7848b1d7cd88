#include "korva/doctor/registry_check.h"

#include <gtest/gtest.h>

namespace korva::tool {
namespace {

using platform::RegistryHealth;

constexpr const char* place = "/home/somebody/a folder/registry";

/// The only finding, a fault of the registry.
Finding faultOf(const RegistryHealth& health) {
    const Findings findings = registryFindings(health, place);
    EXPECT_EQ(findings.size(), 1u);
    const Finding only = findings.empty() ? Finding() : findings.front();
    EXPECT_EQ(only.subject, Subject::registry);
    EXPECT_EQ(only.severity, Severity::fault);
    EXPECT_NE(only.what.find(place), std::string::npos) << only.what;
    return only;
}

TEST(RegistryCheck, FindsNothingInASoundOne) {
    EXPECT_TRUE(registryFindings({}, place).empty());
    EXPECT_TRUE(isReadable({}));
}

TEST(RegistryCheck, OfAMissingFileSaysNothingElse) {
    const RegistryHealth health{.isThere = false, .isWritable = false, .freeBytes = 0};
    EXPECT_EQ(faultOf(health).remedy, "korva register");
    EXPECT_FALSE(isReadable(health));
}

TEST(RegistryCheck, NamesTheDamageAndReadsNoFurther) {
    const RegistryHealth health{.damage = "row 7 missing from index keys"};
    EXPECT_EQ(faultOf(health).cause, "The check of the file says: row 7 missing from index keys.");
    EXPECT_FALSE(isReadable(health));
}

TEST(RegistryCheck, OfRightsNamesTheCommandThatGivesThem) {
    EXPECT_EQ(faultOf({.isWritable = false}).remedy, "chmod u+rw \"/home/somebody/a folder/registry\"");
    EXPECT_EQ(faultOf({.isFolderWritable = false}).remedy, "chmod u+rwx \"/home/somebody/a folder\"");
    EXPECT_TRUE(isReadable({.isWritable = false, .isFolderWritable = false}));
}

TEST(RegistryCheck, WantsRoomForAJournal) {
    constexpr std::uint64_t enough = std::uint64_t{4} << 20;
    EXPECT_TRUE(registryFindings({.freeBytes = enough}, place).empty());
    EXPECT_NE(faultOf({.freeBytes = enough - 1}).cause.find("4194303 bytes are free"), std::string::npos);
}

}  // namespace
}  // namespace korva::tool
