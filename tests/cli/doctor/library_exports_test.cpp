#include <gtest/gtest.h>

#include "korva/doctor/library_check.h"

namespace korva::tool {
namespace {

using Names = std::vector<std::string>;
const Names four = {"DllUnregisterServer", "DllGetClassObject", "DllCanUnloadNow", "DllRegisterServer"};

TEST(LibraryExports, AreFourInAnyOrder) {
    EXPECT_TRUE(exportFindings("libKORVA.so", four).empty());
}

TEST(LibraryExports, EachMissingOneIsAFault) {
    for (std::size_t i = 0; i < four.size(); ++i) {
        Names three = four;
        three.erase(three.begin() + static_cast<std::ptrdiff_t>(i));
        const Findings findings = exportFindings("libKORVA.so", three);
        ASSERT_EQ(findings.size(), 1u);
        EXPECT_EQ(findings.front().severity, Severity::fault);
        EXPECT_EQ(findings.front().what, "The library 'libKORVA.so' lacks " + four[i] + ".");
    }
    EXPECT_EQ(exportFindings("x", {}).size(), 4u);
}

TEST(LibraryExports, AllOthersAreOneRemark) {
    Names more = four;
    more.insert(more.end(), {"malloc", "free"});
    const Findings findings = exportFindings("libKORVA.so", more);
    ASSERT_EQ(findings.size(), 1u);
    EXPECT_EQ(findings.front().severity, Severity::remark);
    EXPECT_NE(findings.front().cause.find("it has 2 others"), std::string::npos);
}

}  // namespace
}  // namespace korva::tool
