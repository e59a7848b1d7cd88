#include "tests/cli/own_key_test.h"

#include <nlohmann/json.hpp>
#include <random>

namespace korva::test {

OwnKeyTest::OwnKeyTest() : key("HKCU\\Software\\KorvaTest-" + std::to_string(std::random_device()())) {}

OwnKeyTest::~OwnKeyTest() {
    static_cast<void>(registry({"delete", key}));
}

namespace {

class OwnKey : public OwnKeyTest {
protected:
    /// As messages have it.
    [[nodiscard]] std::string longKey() const { return "HKEY_CURRENT_USER" + key.substr(4); }
};

TEST_F(OwnKey, ThatIsNotThereIsNamed) {
    EXPECT_TRUE(failedWith(registry({"list", key}), {"there is no key", longKey()}));
    EXPECT_TRUE(failedWith(registry({"get", key, "n"}), {"there is no key", longKey()}));
    EXPECT_TRUE(failedWith(registry({"export", key}), {"there is no key", longKey()}));
    EXPECT_TRUE(failedWith(registry({"delete", key}), {"there is no key", longKey()}));
}

TEST_F(OwnKey, GivesEveryTypeOfValueBackAsItWasSet) {
    quietly({"set", key, "text", "sz", "two words"});
    quietly({"set", key, "number", "dword", "0xFFFFFFFF"});
    quietly({"set", key, "long", "qword", "18446744073709551615"});
    quietly({"set", key, "bytes", "binary", "00ff12"});
    quietly({"set", key, "lines", "multi_sz", "one", "two"});
    EXPECT_EQ(output({"get", key, "text"}), "two words\n");
    EXPECT_EQ(output({"get", key, "number"}), "4294967295\n");
    EXPECT_EQ(output({"get", key, "long"}), "18446744073709551615\n");
    EXPECT_EQ(output({"get", key, "bytes"}), "00ff12\n");
    EXPECT_EQ(output({"get", key, "lines"}), "one\ntwo\n");
}

TEST_F(OwnKey, TakesPatternsAndQuotesAsTheyAre) {
    for (const char* const text : {"*", "/path", "a \"quoted\" word", "ends in \\", "%PATH%", ""}) {
        quietly({"set", key, "n", "sz", "--", text});
        EXPECT_EQ(output({"get", key, "n"}), std::string(text) + "\n");
    }
}

TEST_F(OwnKey, ListsItsKeysAndValues) {
    quietly({"set", key, "@", "sz", "x"});
    quietly({"create", key + "\\sub"});
    EXPECT_EQ(output({"list", key}), longKey() + "\n  sub\\\n  @  sz        \"x\"\n");
    const auto json = nlohmann::json::parse(output({"list", key, "--json"}));
    EXPECT_EQ(json["key"], longKey());
    EXPECT_EQ(json["keys"], nlohmann::json({"sub"}));
    ASSERT_EQ(json["values"].size(), 1U);
}

TEST_F(OwnKey, LosesAValueOrAllThatItHas) {
    quietly({"set", key + "\\sub", "n", "sz", "x"});
    quietly({"delete", key + "\\sub", "n"});
    EXPECT_TRUE(failedWith(registry({"get", key + "\\sub", "n"}), {"there is no value 'n'"}));
    quietly({"delete", key});
    EXPECT_TRUE(failedWith(registry({"list", key}), {"there is no key"}));
}

TEST_F(OwnKey, IsTheSameAfterExportAndImport) {
    quietly({"set", key, "name", "sz",
             "gr\xC3\xB6\xC3\x9F"
             "e \xF0\x9F\x94\x8A"});
    quietly({"set", key + "\\sub", "@", "binary", "0a0d1a00"});
    const std::string text = output({"export", key});
    EXPECT_TRUE(text.starts_with("\xFF\xFE"));
    writeBytes(path("saved.reg"), text);
    quietly({"delete", key});
    quietly({"import", path("saved.reg")});
    EXPECT_EQ(output({"export", key}), text);
}

TEST_F(OwnKey, IsImportedFromStandardInput) {
    const std::string text =
        "Windows Registry Editor Version 5.00\r\n\r\n[" + longKey() + "]\r\n\"n\"=\"x\"\r\n";
    EXPECT_TRUE(succeededQuietly(registryReading(text, {"import", "-"})));
    EXPECT_EQ(output({"get", key, "n"}), "x\n");
}

TEST_F(OwnKey, PrintsNoCarriageReturnOfItsOwn) {
    quietly({"set", key, "n", "sz", "x"});
    EXPECT_EQ(output({"list", key}).find('\r'), std::string::npos);
    EXPECT_EQ(runTool({"--help"}).output.find('\r'), std::string::npos);
    EXPECT_EQ(registry({"get", key, "none"}).error.find('\r'), std::string::npos);
}

}  // namespace
}  // namespace korva::test
