#include <nlohmann/json.hpp>

#include "tests/cli/registry_tool_test.h"

namespace korva::test {
namespace {

using Json = nlohmann::json;
const std::string key = "HKLM\\Software\\Demo";

class RegistryValues : public RegistryToolTest {
protected:
    /// What `get` prints for data that `set` takes.
    [[nodiscard]] std::string afterSet(const std::string& type, std::vector<std::string> words) const {
        words.insert(words.begin(), {"set", key, "n", type});
        quietly(words);
        return output({"get", key, "n"});
    }
    [[nodiscard]] Json json() const { return Json::parse(output({"get", key, "n", "--json"})); }

    /// A value of any type and bytes, as .reg text writes them.
    void import(const std::string& value) const {
        const Outcome outcome = registryReading(
            "Windows Registry Editor Version 5.00\n[" + key + "]\n\"n\"=" + value + "\n", {"import", "-"});
        EXPECT_TRUE(succeededQuietly(outcome));
    }
};

TEST_F(RegistryValues, TextIsPrintedAsItWasGiven) {
    for (const char* const text :
         {"", "a", "a b", "[a,b]", "[]", "{}", "%%", "\"quoted\"", "'x'", "list", "set", "@", "\\",
          "\xC3\xA4\xF0\x9F\x98\x80", "-5", "-x", "--frob", "a\nb"}) {
        EXPECT_EQ(afterSet("sz", {text}), std::string(text) + "\n");
    }
}

TEST_F(RegistryValues, WordsThatLookLikeOptionsGoBehindTwoDashes) {
    EXPECT_EQ(afterSet("sz", {"--", "--help"}), "--help\n");
    EXPECT_EQ(afterSet("multi_sz", {"--", "-h", "b", "--help"}), "-h\nb\n--help\n");
    quietly({"set", key, "--", "-n", "sz", "x"});
    EXPECT_EQ(output({"get", key, "--", "-n"}), "x\n");
}

TEST_F(RegistryValues, TheFirstTwoDashesAreNoTextWhereverTheyStand) {
    EXPECT_EQ(afterSet("multi_sz", {"a", "--", "-b"}), "a\n-b\n");
    EXPECT_EQ(afterSet("multi_sz", {"a", "b", "--", "-c", "--", "d"}), "a\nb\n-c\n--\nd\n");
    EXPECT_EQ(afterSet("sz", {"--", "--"}), "--\n");
    EXPECT_EQ(afterSet("sz", {"--", "++"}), "++\n");
    EXPECT_EQ(afterSet("multi_sz", {"--"}), "\n");
    quietly({"set", key, "--", "-n", "multi_sz", "a", "--", "b"});
    EXPECT_EQ(output({"get", key, "--", "-n"}), "a\n--\nb\n");
}

TEST_F(RegistryValues, TextsKeepTheirOrderAlsoIfTheyLookLikeOptions) {
    EXPECT_EQ(afterSet("multi_sz", {"-x", "b", "--y", "c"}), "-x\nb\n--y\nc\n");
    EXPECT_EQ(afterSet("multi_sz", {"a", "-5", "[b,c]", "list"}), "a\n-5\n[b,c]\nlist\n");
}

TEST_F(RegistryValues, NumbersAreTakenInDecimalAndHexadecimalToTheirLimits) {
    EXPECT_EQ(afterSet("dword", {"0"}), "0\n");
    EXPECT_EQ(afterSet("dword", {"4294967295"}), "4294967295\n");
    EXPECT_EQ(afterSet("dword", {"0xFFffFFff"}), "4294967295\n");
    EXPECT_EQ(afterSet("qword", {"18446744073709551615"}), "18446744073709551615\n");
    EXPECT_EQ(afterSet("qword", {"0xffffffffffffffff"}), "18446744073709551615\n");
}

TEST_F(RegistryValues, NumbersOutsideAreRefused) {
    for (const char* const word : {"-1", "4294967296", "0x100000000", "", "0x", "1 ", " 1", "+1", "1.0", "a",
                                   "99999999999999999999999"}) {
        EXPECT_TRUE(failedWith(registry({"set", key, "n", "dword", word}),
                               {"dword", "0 to 4294967295", "'" + std::string(word) + "'"}))
            << word;
    }
    EXPECT_TRUE(failedWith(registry({"set", key, "n", "qword", "18446744073709551616"}),
                           {"0 to 18446744073709551615"}));
    EXPECT_TRUE(failedWith(registry({"list", key}), {"no key"}));  // a refused value makes none
}

TEST_F(RegistryValues, BytesAreTakenAsPairsOfDigits) {
    EXPECT_EQ(afterSet("binary", {"00fF12"}), "00ff12\n");
    EXPECT_EQ(afterSet("binary", {""}), "\n");
    EXPECT_EQ(afterSet("binary", {}), "\n");
    for (const char* const digits : {"0", "000", "0g", "0x00", "00 11", "-1"}) {
        EXPECT_TRUE(failedWith(registry({"set", key, "n", "binary", digits}), {"binary", digits})) << digits;
    }
}

TEST_F(RegistryValues, SeveralTextsAreALineEach) {
    EXPECT_EQ(afterSet("multi_sz", {"a", "[b,c]", "d e", "list"}), "a\n[b,c]\nd e\nlist\n");
    EXPECT_EQ(afterSet("multi_sz", {}), "\n");
    EXPECT_EQ(json(), Json({{"name", "n"}, {"type", "multi_sz"}, {"data", Json::array()}}));
    EXPECT_TRUE(failedWith(registry({"set", key, "n", "multi_sz", "a", "", "b"}), {"empty"}));
    EXPECT_TRUE(failedWith(registry({"set", key, "n", "multi_sz", ""}), {"empty"}));
}

TEST_F(RegistryValues, TypesWantTheirNumberOfData) {
    EXPECT_TRUE(failedWith(registry({"set", key, "n", "sz"}), {"sz", "one DATA", "0"}));
    EXPECT_TRUE(failedWith(registry({"set", key, "n", "sz", "a", "b"}), {"sz", "one DATA", "2"}));
    EXPECT_TRUE(failedWith(registry({"set", key, "n", "dword"}), {"dword", "one DATA"}));
    EXPECT_TRUE(failedWith(registry({"set", key, "n", "binary", "00", "11"}), {"binary", "one DATA"}));
    EXPECT_TRUE(failedWith(registry({"set", key, "n"}), {"TYPE", "korva registry set --help"}));
}

TEST_F(RegistryValues, AnUnknownTypeIsRefusedWithThoseThereAre) {
    EXPECT_TRUE(failedWith(registry({"set", key, "n", "DWORD", "1"}),
                           {"'DWORD'", "sz, dword, qword, binary or multi_sz"}));
}

TEST_F(RegistryValues, WordsThatAreNoUtf8AreRefused) {
    EXPECT_TRUE(failedWith(registry({"set", key, "n", "sz", "\xFF"}), {"not UTF-8"}));
    EXPECT_TRUE(failedWith(registry({"set", key, "n", "multi_sz", "a", "\xFF"}), {"not UTF-8"}));
    EXPECT_TRUE(failedWith(registry({"set", key, "\xFF", "sz", "a"}), {"not UTF-8"}));
    EXPECT_TRUE(failedWith(registry({"set", key + "\\\xFF", "n", "sz", "a"}), {"not UTF-8"}));
}

TEST_F(RegistryValues, AsJsonTellTheirType) {
    import("\"a\\nb\"");
    EXPECT_EQ(json(), Json({{"name", "n"}, {"type", "sz"}, {"data", "a\nb"}}));
    import("dword:0000001f");
    EXPECT_EQ(json(), Json({{"name", "n"}, {"type", "dword"}, {"data", 31}}));
    import("hex(b):ff,ff,ff,ff,ff,ff,ff,ff");
    EXPECT_EQ(json(), Json({{"name", "n"}, {"type", "qword"}, {"data", 18446744073709551615U}}));
    import("hex(2):61,00,00,00");
    EXPECT_EQ(json(), Json({{"name", "n"}, {"type", "expand_sz"}, {"data", "a"}}));
    import("hex:00,ff");
    EXPECT_EQ(json(), Json({{"name", "n"}, {"type", "binary"}, {"bytes", "00ff"}}));
    import("hex(ffff0000):01");
    EXPECT_EQ(json(), Json({{"name", "n"}, {"type", "0xffff0000"}, {"bytes", "01"}}));
}

TEST_F(RegistryValues, WhoseDataLeaveSomethingOutHaveTheirBytesInJson) {
    import("hex(1):61,00");
    EXPECT_EQ(json(), Json({{"name", "n"}, {"type", "sz"}, {"data", "a"}, {"bytes", "6100"}}));
    import("hex(1):61,00,62");
    EXPECT_EQ(json(), Json({{"name", "n"}, {"type", "sz"}, {"bytes", "610062"}}));
    import("hex(1):00,d8,00,00");
    EXPECT_EQ(json(), Json({{"name", "n"}, {"type", "sz"}, {"bytes", "00d80000"}}));
    import("hex(4):01,02");
    EXPECT_EQ(json(), Json({{"name", "n"}, {"type", "dword"}, {"bytes", "0102"}}));
    import("hex(7):61,00,00,00");
    EXPECT_EQ(json(), Json({{"name", "n"}, {"type", "multi_sz"}, {"data", {"a"}}, {"bytes", "61000000"}}));
    import("hex(7):61,00,00,00,00,00,62,00,00,00,00,00");
    EXPECT_EQ(json(), Json({{"name", "n"}, {"type", "multi_sz"}, {"bytes", "610000000000620000000000"}}));
}

TEST_F(RegistryValues, WhoseBytesAreNotOfTheirTypeArePrintedAsBytes) {
    for (const auto& [value, printed] : std::initializer_list<std::pair<const char*, const char*>>{
             {"hex(1):61,00,62", "610062\n"},
             {"hex(1):61,00,00,00,62,00,00,00", "6100000062000000\n"},
             {"hex(4):01,02,03", "010203\n"},
             {"hex(b):01", "01\n"},
             {"hex(0):", "\n"},
             {"hex(1):61,00", "a\n"}}) {
        import(value);
        EXPECT_EQ(output({"get", key, "n"}), printed) << value;
    }
}

}  // namespace
}  // namespace korva::test
