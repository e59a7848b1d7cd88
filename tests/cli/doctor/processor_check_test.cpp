#include "korva/doctor/processor_check.h"

#include <gtest/gtest.h>

namespace korva::tool {
namespace {

/// Of a processor that lacks nothing.
ProcessorFacts usualFacts() {
    return {{"plain", "sse2", "avx2"}, "", 65536, std::nullopt};
}

Finding onlyFinding(const ProcessorFacts& facts) {
    const Findings findings = processorFindings(facts);
    EXPECT_EQ(findings.size(), 1u);
    return findings.empty() ? Finding() : findings.front();
}

TEST(ProcessorCheck, FindsNothingInAUsualOne) {
    EXPECT_TRUE(processorFindings(usualFacts()).empty());
}

TEST(ProcessorCheck, OneWithoutAvx2IsARemark) {
    ProcessorFacts facts = usualFacts();
    facts.kernels.pop_back();
    EXPECT_EQ(onlyFinding(facts).severity, Severity::remark);
    EXPECT_EQ(onlyFinding(facts).what, "The loops over samples run in their version sse2.");
}

TEST(ProcessorCheck, AForcedVersionIsARemarkWhetherThereIsOneOrNot) {
    ProcessorFacts facts = usualFacts();
    facts.forced = "plain";
    EXPECT_EQ(onlyFinding(facts).severity, Severity::remark);
    EXPECT_NE(onlyFinding(facts).cause.find("forces that version"), std::string::npos);
    facts.forced = "mmx";
    EXPECT_NE(onlyFinding(facts).cause.find("no such version"), std::string::npos);
}

TEST(ProcessorCheck, TooLittleMemoryToLockIsAFault) {
    ProcessorFacts facts = usualFacts();
    facts.lockableBytes = 65536;
    EXPECT_TRUE(processorFindings(facts).empty());
    facts.lockableBytes = 65535;
    EXPECT_EQ(onlyFinding(facts).severity, Severity::fault);
    facts.lockableBytes = 0;
    EXPECT_NE(onlyFinding(facts).cause.find("may lock 0 bytes, and the code takes up to 65536"),
              std::string::npos);
}

TEST(ProcessorCheck, SeesThisProcessor) {
    const ProcessorFacts facts = processorFacts();
    ASSERT_FALSE(facts.kernels.empty());
    EXPECT_EQ(facts.kernels.front(), "plain");
    EXPECT_GT(facts.neededBytes, 4096u);
}

}  // namespace
}  // namespace korva::tool
