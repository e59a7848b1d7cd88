#include <algorithm>
#include <fstream>
#include <iterator>
#include <nlohmann/json.hpp>
#include <random>

#include "engine/dsp_module_api.h"
#include "korva/module/library_file.h"
#include "tests/cli/tool_test.h"

namespace korva::test {
namespace {

using Json = nlohmann::json;

const std::string testModules = KORVA_TEST_MODULES;
const std::string minimal = KORVA_EXAMPLE_MODULES "/minimal.so";

std::string bytesOf(const std::string& file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

class ModuleInfo : public ToolTest {
protected:
    [[nodiscard]] Outcome info(const std::string& module, std::vector<std::string> options = {}) const {
        options.insert(options.begin(), {"module", "info", module});
        return runTool(std::move(options));
    }

    std::string file(const std::string& name, const std::string& bytes) {
        std::ofstream(path(name), std::ios::binary) << bytes;
        return path(name);
    }

    /// A copy of the least module, one byte of it changed.
    std::string changed(std::size_t offset, char value) {
        std::string bytes = bytesOf(minimal);
        bytes.at(offset) = value;
        return file("changed.so", bytes);
    }
};

/// Whether the tool ran and found the module of no use, for a reason that has `part`.
testing::AssertionResult isUnusable(const Outcome& outcome, const std::string& part) {
    const std::size_t verdict = outcome.output.find("Usable         no: ");
    const bool isSo = outcome.exitCode == 1 && outcome.error.empty() && verdict != std::string::npos &&
                      outcome.output.find(part, verdict) != std::string::npos;
    return (isSo ? testing::AssertionSuccess() : testing::AssertionFailure())
           << "exit code " << outcome.exitCode << "\n"
           << outcome.output << outcome.error;
}

TEST_F(ModuleInfo, AUsableModuleHasTheExitCodeZero) {
    const Outcome outcome = info(minimal);
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(outcome.error, "");
    EXPECT_TRUE(outcome.output.ends_with("Usable         yes\n")) << outcome.output;
}

TEST_F(ModuleInfo, EachExportIsPresentOrHasItsCost) {
    const std::string output = info(minimal).output;
    EXPECT_NE(output.find("  ZRDSPAPI_Create                   present\n"), std::string::npos) << output;
    EXPECT_NE(output.find("  ZRDSPAPI_SetParameter             missing: no setting reaches it\n"),
              std::string::npos)
        << output;
}

TEST_F(ModuleInfo, JsonHasAllOfIt) {
    const Json json = Json::parse(info(minimal, {"--json"}).output);
    EXPECT_EQ(json["module"], minimal);
    EXPECT_EQ(json["usable"], true);
    EXPECT_EQ(json["fault"], nullptr);
    ASSERT_EQ(json["exports"].size(), 14U);
    for (std::size_t i = 0; i < 14; ++i) {
        EXPECT_EQ(json["exports"][i]["name"], engine::dspModuleExports[i]);
        EXPECT_EQ(json["exports"][i]["cost"].is_null(), json["exports"][i]["present"].get<bool>());
    }
    EXPECT_TRUE(std::ranges::any_of(
        json["needs"], [](const Json& name) { return name.get<std::string>().starts_with("libc.so"); }));
}

TEST_F(ModuleInfo, AModuleThatCannotCreateIsOfNoUse) {
    EXPECT_TRUE(isUnusable(info(KORVA_BROKEN_DISK), "it has no ZRDSPAPI_Create"));
}

TEST_F(ModuleInfo, ALibraryThatIsMissingIsNamed) {
    const Outcome outcome = info(testModules + "/needing_library.so");
    EXPECT_TRUE(isUnusable(outcome, "it needs what isn't there: libkorva_somebody.so"));
    EXPECT_NE(outcome.output.find("ZRDSPAPI_Create                   present"), std::string::npos);
}

TEST_F(ModuleInfo, AFunctionThatNobodyHasIsNamed) {
    const Outcome outcome = info(testModules + "/needing_symbol.so", {"--json"});
    EXPECT_EQ(outcome.exitCode, 1);
    const Json json = Json::parse(outcome.output);
    EXPECT_EQ(json["missingSymbols"], Json({"somebodyElses"}));
    EXPECT_EQ(json["fault"], "it needs what no library has: somebodyElses");
}

TEST_F(ModuleInfo, AnEmptyFileIsNoLibrary) {
    EXPECT_TRUE(isUnusable(info(file("empty.so", "")), "not a library: it is empty"));
}

TEST_F(ModuleInfo, ATextIsNoLibrary) {
    EXPECT_TRUE(isUnusable(info(file("text.so", "#!/bin/sh\n")), "not a library, by its first bytes"));
}

TEST_F(ModuleInfo, ALibraryForWindowsIsNamedAsSuch) {
    EXPECT_TRUE(isUnusable(info(file("module.dll", "MZ\x90")), "for Windows"));
}

TEST_F(ModuleInfo, AnArchiveIsNamedAsSuch) {
    EXPECT_TRUE(isUnusable(info(file("module.a", "!<arch>\n")), "an archive"));
}

TEST_F(ModuleInfo, AProgramIsNoLibrary) {
    EXPECT_TRUE(isUnusable(info(KORVA_TOOL), "a program"));
}

TEST_F(ModuleInfo, ALibraryForAnotherMachineIsNamedWithBoth) {
    constexpr std::size_t machine = 18;
    constexpr char arm = '\xB7';
    EXPECT_TRUE(
        isUnusable(info(changed(machine, arm)), "for another machine: AArch64 of 64 bit; this one is "));
}

TEST_F(ModuleInfo, ALibraryOfThirtyTwoBitsIsForAnotherMachine) {
    constexpr std::size_t width = 4;
    EXPECT_TRUE(isUnusable(info(changed(width, 1)), " of 32 bit; this one is "));
}

TEST_F(ModuleInfo, ALibraryThatIsCutShortIsNamedWithItsLength) {
    const Outcome outcome = info(file("cut.so", bytesOf(minimal).substr(0, 3000)));
    EXPECT_TRUE(isUnusable(outcome, "no: cut short: it has 3000 of at least "));
}

TEST_F(ModuleInfo, WhatTheLoaderSaysOfADamagedLibraryIsOneLine) {
    const std::string whole = bytesOf(minimal);
    const Outcome outcome = info(file("cut.so", whole.substr(0, 200)));
    EXPECT_TRUE(isUnusable(outcome, ""));
    EXPECT_EQ(std::ranges::count(outcome.output.substr(outcome.output.find("Usable")), '\n'), 1)
        << outcome.output;
}

TEST_F(ModuleInfo, APathThatCannotBeReadIsAnError) {
    EXPECT_TRUE(failedWith(info(path("absent.so")), {"cannot read", "absent.so", "No such file"}));
    EXPECT_TRUE(failedWith(info(folder.string()), {"cannot read", "it is a folder"}));
    EXPECT_TRUE(failedWith(info("/dev/null"), {"cannot read", "it is no file"}));
    EXPECT_TRUE(failedWith(info(""), {"cannot read"}));
}

TEST_F(ModuleInfo, ANameWithControlCharactersStaysOnItsLine) {
    const Outcome outcome = info(file("two\nlines.so", bytesOf(minimal)));
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_NE(outcome.output.find("two\\x0Alines.so\n"), std::string::npos) << outcome.output;
}

TEST_F(ModuleInfo, ARelativePathIsThatOfTheCurrentFolder) {
    Launch launch = tool({"module", "info", std::filesystem::relative(minimal).string()});
    EXPECT_EQ(run(launch).exitCode, 0);
}

TEST_F(ModuleInfo, DamageAnywhereInTheFileIsStood) {
    const std::string whole = bytesOf(minimal);
    const unsigned seed = std::random_device()();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    for (int round = 0; round < 300; ++round) {
        std::string bytes = whole;
        for (int i = 0; i < 8; ++i) {
            // Most of what the reader follows stands at the file's ends.
            const std::size_t near = random() % 2 == 0 ? random() % 1024 : bytes.size() - 1 - random() % 4096;
            bytes[std::min(near, bytes.size() - 1)] = static_cast<char>(random());
        }
        bytes.resize(random() % 4 == 0 ? random() % bytes.size() : bytes.size());
        const tool::LibraryFile read = tool::readLibraryFile(file("damaged.so", bytes));
        EXPECT_LT(read.exports.size(), 100'000U);
    }
}

}  // namespace
}  // namespace korva::test
