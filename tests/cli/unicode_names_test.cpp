// Names beyond what a system's own encoding may have, on the command line, of files and in what is printed.
#include "tests/cli/own_key_test.h"
#include "tests/cli/preset_tool_test.h"

namespace korva::test {
namespace {

/// Latin, Greek, Chinese, and a character of two units of UTF-16.
constexpr const char* manyScripts = "t\xC3\xB6n \xCE\xBB \xE9\x9F\xB3 \xF0\x9F\x94\x8A";

class UnicodeFileName : public PresetToolTest {};
class UnicodeKeyName : public OwnKeyTest {};

TEST_F(UnicodeFileName, OfAPresetIsOpenedAndPrinted) {
    const std::string name = std::string(manyScripts) + ".json";
    writeBytes(path(name), presetJson(thirdEngine, ""));
    EXPECT_EQ(namesIn(folder), std::vector<std::string>{name});
    const Outcome outcome = preset({"check", path(name)});
    EXPECT_EQ(outcome.exitCode, 0) << outcome.error;
    EXPECT_TRUE(outcome.output.starts_with(path(name) + ": engine ")) << outcome.output;
}

TEST_F(UnicodeFileName, OfNoFileIsInTheError) {
    EXPECT_TRUE(failedWith(preset({"check", path(manyScripts)}), {path(manyScripts), "No such file"}));
}

TEST_F(UnicodeFileName, OfAFolderIsInTheError) {
    EXPECT_TRUE(failedWith(preset({"check", path("")}), {"cannot read", "it is a folder"}));
}

TEST_F(UnicodeFileName, OfALibraryIsInTheError) {
    EXPECT_TRUE(failedWith(runTool({"register", "--library", path(manyScripts)}),
                           {"there is no library", manyScripts}));
}

TEST_F(UnicodeKeyName, AndValueComeBackAsTheyWere) {
    const std::string named = key + "\\" + manyScripts;
    quietly({"set", named, manyScripts, "sz", manyScripts});
    EXPECT_EQ(output({"get", named, manyScripts}), std::string(manyScripts) + "\n");
    EXPECT_NE(output({"list", key}).find(std::string("  ") + manyScripts + "\\\n"), std::string::npos);
}

}  // namespace
}  // namespace korva::test
