#include "korva/doctor/telemetry_check.h"

#include <gtest/gtest.h>

namespace korva::tool {
namespace {

namespace result = platform::registry_result;

TelemetryFacts facts(platform::RegistryResult base, platform::RegistryResult instances) {
    return {{"Software\\Base", base}, {"Software\\Base\\Instances", instances}, {}};
}

TEST(TelemetryCheck, FindsNothingWhereKeysAreThere) {
    TelemetryFacts whole = facts(0, 0);
    whole.volatileSets.push_back({{"id", "Speakers"}, {"Software\\Set", 0}});
    EXPECT_TRUE(telemetryFindings(whole).empty());
}

TEST(TelemetryCheck, ObjectsMakeTheKeyOfInstancesThemselves) {
    EXPECT_TRUE(telemetryFindings(facts(0, result::notFound)).empty());
}

TEST(TelemetryCheck, AMissingBaseIsOneFault) {
    const Findings findings = telemetryFindings(facts(result::notFound, result::notFound));
    ASSERT_EQ(findings.size(), 1u);
    EXPECT_EQ(findings.front().severity, Severity::fault);
    EXPECT_EQ(findings.front().remedy, "korva registry create \"HKLM\\Software\\Base\"");
}

TEST(TelemetryCheck, ALinkInThePlaceOfEitherIsAFault) {
    for (const TelemetryFacts& linked : {facts(result::isLink, result::notFound), facts(0, result::isLink)}) {
        const Findings findings = telemetryFindings(linked);
        ASSERT_EQ(findings.size(), 1u);
        EXPECT_NE(findings.front().cause.find("points at another one"), std::string::npos);
        EXPECT_EQ(findings.front().remedy.find("korva registry delete "), 0u);
    }
}

TEST(TelemetryCheck, AVolatileSetThatIsMissingOrALinkIsAFaultOfItsEndpoint) {
    for (const platform::RegistryResult code : {result::notFound, result::isLink}) {
        TelemetryFacts without = facts(0, 0);
        without.volatileSets.push_back({{"id", "Speakers"}, {"Software\\Set", code}});
        without.volatileSets.push_back({{"other id", ""}, {"Software\\Other", 0}});
        const Findings findings = telemetryFindings(without);
        ASSERT_EQ(findings.size(), 1u);
        EXPECT_EQ(findings.front().what, "The values of objects on \"Speakers\" are not shown.");
        EXPECT_NE(findings.front().remedy.find("create \"HKLM\\Software\\Set\""), std::string::npos);
    }
}

}  // namespace
}  // namespace korva::tool
