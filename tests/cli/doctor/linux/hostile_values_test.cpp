// Values that nobody of us wrote.
#include "tests/cli/doctor/linux/doctor_test.h"

namespace korva::test {
namespace {

class DoctorHostile : public DoctorTest {
protected:
    /// Whether it comes to an end, with faults told as JSON.
    void survives() const {
        const Outcome outcome = doctor({"--json"});
        EXPECT_EQ(outcome.exitCode, 1) << outcome.output << outcome.error;
        EXPECT_FALSE(nlohmann::json::parse(outcome.output, nullptr, false).is_discarded()) << outcome.output;
        EXPECT_EQ(doctor().exitCode, 1);
    }
    void import(const std::string& lines) const {
        writeBytes(path("values.reg"), "Windows Registry Editor Version 5.00\r\n\r\n" + lines + "\r\n");
        const Outcome outcome = registry({"import", path("values.reg")});
        EXPECT_EQ(outcome.exitCode, 0) << outcome.error;
    }
    [[nodiscard]] std::string userSection() const {
        return "[HKEY_LOCAL_MACHINE" + setKey("User").substr(4) + "]\r\n";
    }
};

TEST_F(DoctorHostile, TypesThatDoNotFitTheirBytesAreFaults) {
    for (const char* const type : {"hex(1)", "hex(2)", "hex(4)", "hex(7)", "hex(b)", "hex(0)", "hex(ffff)"}) {
        for (const char* const bytes : {"", "00", "41,00,00", "00,d8,00,dc,ff"}) {
            std::string lines = userSection();
            for (const unsigned pid : {0U, 1U, 2U, 3000U, 3001U, 9999U}) {
                lines += "\"" + property(pid) + "\"=" + type + ":" + bytes + "\r\n";
            }
            import(lines);
            const Outcome outcome = doctor({"--json"});
            EXPECT_EQ(outcome.exitCode, 1) << type << ' ' << bytes << outcome.error;
            EXPECT_FALSE(nlohmann::json::parse(outcome.output, nullptr, false).is_discarded());
        }
    }
}

TEST_F(DoctorHostile, TextWithoutAnEndOrWithSignsOfTerminalsStaysOnItsLine) {
    import(userSection() + "\"" + property(2) + "\"=hex(1):1b,00,5b,00,32,00,4a,00,0a,00,6f,00\r\n");
    survives();
    const Outcome outcome = doctor();
    EXPECT_EQ(outcome.output.find('\x1B'), std::string::npos);
    EXPECT_NE(outcome.output.find("\\x1B[2J\\x0Ao'"), std::string::npos) << outcome.output;
}

TEST_F(DoctorHostile, BinaryWhereARegistrationHasTextIsAFault) {
    import(
        "[HKEY_CLASSES_ROOT\\CLSID\\{C26AD82E-B1CB-4BDF-87E9-CACD7FD6C6FD}\\InprocServer32]\r\n"
        "@=hex:00,01\r\n\"ThreadingModel\"=hex(7):00\r\n");
    EXPECT_TRUE(findsOnly("registration", {"Its default value and 'ThreadingModel' are not"}));
}

TEST_F(DoctorHostile, KeysOfInstancesWithoutTheirFormAreNoMatter) {
    for (const char* const name : {"{}", "somebody's", "{6dcc1ac8-4a3c-4a98-a3a7-00000000000g}"}) {
        quietly({"create", std::string(telemetryKey) + "\\APO\\Instances\\" + name});
    }
    EXPECT_TRUE(findsNothing());
}

TEST_F(DoctorHostile, ManyHugeValuesAreTold) {
    std::string lines = userSection();
    std::string bytes = "00";
    for (int i = 0; i < 50000; ++i) {
        bytes += ",00";
    }
    lines +=
        "\"" + property(3000) + "\"=hex:" + bytes + "\r\n\"" + property(2) + "\"=hex(1):" + bytes + "\r\n";
    for (unsigned pid = 4000; pid < 5000; ++pid) {
        lines += "\"" + property(pid) + "\"=hex:00\r\n";
    }
    import(lines);
    survives();
}

}  // namespace
}  // namespace korva::test
