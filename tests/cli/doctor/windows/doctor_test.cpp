// The tool over the machine's own registry, which has the library registered or not.
#include <algorithm>
#include <nlohmann/json.hpp>

#include "tests/cli/tool_test.h"

namespace korva::test {
namespace {

using Json = nlohmann::json;

class DoctorTest : public ToolTest {
protected:
    ~DoctorTest() override { static_cast<void>(runTool({"unregister"})); }

    /// What it tells of its registration.
    [[nodiscard]] Json registrationFindings() const {
        const Outcome outcome = runTool({"doctor", "--json"});
        EXPECT_EQ(outcome.error, "");
        const Json report = Json::parse(outcome.output);
        EXPECT_EQ(outcome.exitCode, report["faults"] == 0 ? 0 : 1);
        Json found = Json::array();
        std::ranges::copy_if(report["findings"], std::back_inserter(found), [](const Json& finding) {
            return finding["subject"] == "registration" || finding["subject"] == "library";
        });
        return found;
    }
};

TEST_F(DoctorTest, FollowsARegistration) {
    ASSERT_EQ(runTool({"register"}).exitCode, 0);
    EXPECT_EQ(registrationFindings(), Json::array());
    ASSERT_EQ(runTool({"unregister"}).exitCode, 0);
    const Json findings = registrationFindings();
    ASSERT_EQ(findings.size(), 1u);
    EXPECT_NE(findings[0]["what"].get<std::string>().find("is not registered"), std::string::npos);
    EXPECT_EQ(findings[0]["remedy"], "korva register");
}

TEST_F(DoctorTest, TellsTheSystemsReasonForALibraryThatIsNone) {
    writeBytes(path("none.dll"), "no library");
    const Outcome outcome = runTool({"doctor", "--library", path("none.dll")});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_NE(outcome.output.find("can't be loaded.\n  cause: The reason: "), std::string::npos)
        << outcome.output;
}

}  // namespace
}  // namespace korva::test
