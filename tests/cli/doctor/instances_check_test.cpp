#include "korva/doctor/instances_check.h"

#include <gtest/gtest.h>

namespace korva::tool {
namespace {

using Kind = InstanceKey::Kind;

TEST(InstancesCheck, FindsNothingInLiveOnes) {
    EXPECT_TRUE(instanceFindings({}).empty());
    EXPECT_TRUE(instanceFindings({{"{a}", Kind::live, 0}, {"{b}", Kind::live, 0}}).empty());
}

TEST(InstancesCheck, LeftOverKeysAreOneFaultThatMonitorSweeps) {
    const Findings one = instanceFindings({{"{a}", Kind::live, 0}, {"{b}", Kind::stale, 0}});
    ASSERT_EQ(one.size(), 1u);
    EXPECT_EQ(one.front().severity, Severity::fault);
    EXPECT_EQ(one.front().what, "An audio object left its key behind.");
    EXPECT_EQ(one.front().remedy, "korva monitor --sweep");
    const Findings two = instanceFindings({{"{a}", Kind::stale, 0}, {"{b}", Kind::stale, 0}});
    ASSERT_EQ(two.size(), 1u);
    EXPECT_EQ(two.front().what, "2 audio objects left their keys behind.");
}

TEST(InstancesCheck, WhatNobodyCanReadIsARemark) {
    const Findings findings = instanceFindings(
        {{"{a}", Kind::link, platform::registry_result::isLink}, {"{b}", Kind::unreadable, 5}});
    ASSERT_EQ(findings.size(), 2u);
    for (const Finding& finding : findings) {
        EXPECT_EQ(finding.severity, Severity::remark);
    }
}

}  // namespace
}  // namespace korva::tool
