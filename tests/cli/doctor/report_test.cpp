#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "korva/doctor/doctor_report.h"

namespace korva::tool {
namespace {

const Finding remark = {Subject::modules, Severity::remark, "A remark.", "Its cause.", ""};
const Finding fault = {Subject::library, Severity::fault, "A fault.", "Its cause.", "korva help"};

TEST(DoctorReport, OfNothingIsALineForEachSubject) {
    EXPECT_EQ(doctorText({}),
              "ok: registry\nok: library\nok: registration\nok: endpoints\nok: modules\nok: telemetry\n"
              "ok: instances\nok: processor\nno fault\n");
}

TEST(DoctorReport, TellsFindingsInThePlaceOfTheirSubjects) {
    const DoctorReport report{{fault, remark}, {}};
    EXPECT_EQ(report.faults(), 1u);
    EXPECT_EQ(doctorText(report),
              "ok: registry\nfault: A fault.\n  cause: Its cause.\n  remedy: korva help\nok: registration\n"
              "ok: endpoints\nremark: A remark.\n  cause: Its cause.\nok: telemetry\nok: instances\n"
              "ok: processor\n1 fault\n");
}

TEST(DoctorReport, TellsWhatWasSkipped) {
    DoctorReport report{{fault, fault}, {}};
    report.isSkipped[static_cast<std::size_t>(Subject::telemetry)] = true;
    EXPECT_NE(doctorText(report).find("skipped: telemetry\n"), std::string::npos);
    EXPECT_TRUE(doctorText(report).ends_with("2 faults\n"));
}

TEST(DoctorReport, KeepsHostileTextOnItsLine) {
    Finding hostile = fault;
    hostile.cause = "a\nok: modules\x1B[2J\xC2\x9B";
    EXPECT_NE(doctorText({{hostile}, {}}).find("  cause: a\\x0Aok: modules\\x1B[2J\\x9B\n"),
              std::string::npos);
}

TEST(DoctorReport, AsJsonHasAllMembersAndIsValidForAnyBytes) {
    Finding hostile = fault;
    hostile.what = "\xFF\xFE \"quoted\"\n";
    const auto json = nlohmann::json::parse(doctorJson({{hostile, remark}, {}}));
    EXPECT_EQ(json["faults"], 1);
    ASSERT_EQ(json["findings"].size(), 2u);
    EXPECT_EQ(json["findings"][0]["subject"], "library");
    EXPECT_EQ(json["findings"][0]["severity"], "fault");
    EXPECT_EQ(json["findings"][0]["remedy"], "korva help");
    EXPECT_EQ(json["findings"][1]["severity"], "remark");
    EXPECT_EQ(json["findings"][1]["what"], "A remark.");
    EXPECT_EQ(json["findings"][1]["cause"], "Its cause.");
    EXPECT_EQ(json["findings"][1]["remedy"], "");
    EXPECT_EQ(nlohmann::json::parse(doctorJson({}))["findings"], nlohmann::json::array());
}

}  // namespace
}  // namespace korva::tool
