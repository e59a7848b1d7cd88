#include "tests/cli/doctor/linux/doctor_test.h"

namespace korva::test {
namespace {

class DoctorEndpoints : public DoctorTest {
protected:
    void set(unsigned pid, const std::string& type, const std::string& data) const {
        quietly({"set", setKey("User"), property(pid), type, data});
    }
    [[nodiscard]] testing::AssertionResult findsInEndpoint(std::vector<std::string> parts) const {
        parts.push_back("the mfx effect of \"Speakers\"");
        return findsOnly("endpoints", parts);
    }
};

TEST_F(DoctorEndpoints, WithoutAnySettingsAreNoFault) {
    done({"endpoint", "add", "Headphones"});
    done({"endpoint", "add", "Microphone", "--capture"});
    EXPECT_TRUE(findsNothing());
}

TEST_F(DoctorEndpoints, NeedASelectionThatIsAGuid) {
    const std::string selection = "{6dcc1ac8-4a3c-4a98-a3a7-f967127d5763},4";
    quietly({"set", setKey("User"), selection, "sz", "mfx"});
    EXPECT_TRUE(findsInEndpoint({selection, "is no GUID: 'mfx'", "korva preset install"}));
    quietly({"set", setKey("User"), selection, "dword", "4"});
    EXPECT_TRUE(findsInEndpoint({selection, "is no text"}));
}

TEST_F(DoctorEndpoints, NeedAVersion) {
    set(0, "dword", "0");
    EXPECT_TRUE(findsInEndpoint({property(0), "is 0"}));
}

TEST_F(DoctorEndpoints, NeedAKnownEngine) {
    set(2, "sz", "{11111111-1111-1111-1111-111111111111}");
    EXPECT_TRUE(findsInEndpoint({"is not known", "korva catalogue"}));
    set(2, "sz", "{c9f475bc-13e4-6150-ae88-790995afc7c1}");
    EXPECT_TRUE(findsNothing());
}

TEST_F(DoctorEndpoints, NeedAModeThatIsANumber) {
    set(1, "sz", "0");
    EXPECT_TRUE(findsInEndpoint({property(1), "is no number"}));
    set(1, "dword", "4");
    EXPECT_TRUE(findsNothing());
}

TEST_F(DoctorEndpoints, NeedChunksThatFitTheEngine) {
    set(3001, "binary", "000000");
    EXPECT_TRUE(findsInEndpoint({"Chunk 1", property(3001), "has 3 of at least 4 bytes"}));
    set(3001, "sz", "bytes");
    EXPECT_TRUE(findsInEndpoint({"Chunk 1", "holds no bytes"}));
    set(3001, "binary", "00000000");
    EXPECT_TRUE(findsInEndpoint({"Chunk 1", "too short"}));
    set(3001, "binary", std::string(std::size_t{2} * 4000, '0'));
    EXPECT_TRUE(findsInEndpoint({"Chunk 1", "too long, with 4000 bytes"}));
}

TEST_F(DoctorEndpoints, HaveNoMoreChunksThanTheirEngine) {
    set(3004, "binary", "00000000");
    EXPECT_TRUE(findsInEndpoint({"more chunks than its engine", "The engine has 4"}));
}

TEST_F(DoctorEndpoints, WithSettingsNeedAVolatileSet) {
    quietly({"delete", setKey("Volatile")});
    EXPECT_TRUE(findsOnly("telemetry", {"Speakers", "no volatile set",
                                        "korva registry create \"" + setKey("Volatile") + "\""}));
}

TEST_F(DoctorEndpoints, NeedNoStandardSet) {
    quietly({"delete", setKey("Default")});
    EXPECT_TRUE(findsNothing());
}

TEST_F(DoctorEndpoints, WhoseSetsAreLinksAreNotRead) {
    quietly({"set", setKey("Volatile"), "SymbolicLinkValue", "sz", "x"});
    EXPECT_TRUE(findsOnly("telemetry", {"Volatile", "points at another one"}));
    quietly({"delete", setKey("Volatile")});
    quietly({"create", setKey("Volatile")});
    quietly({"set", setKey("User"), "SymbolicLinkValue", "sz", "x"});
    EXPECT_TRUE(findsOnly("endpoints", {"The settings of \"Speakers\" are not read", "User"}));
}

}  // namespace
}  // namespace korva::test
