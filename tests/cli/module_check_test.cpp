// `korva module check` as a user runs it.
#include "tests/cli/module_check_test.h"

#include <elf.h>
#include <signal.h>
#include <sys/stat.h>

#include <chrono>
#include <cstring>
#include <filesystem>
#include <fstream>

#include "tests/support/wait_until.h"

namespace korva::test {
namespace {

class ModuleCheck : public ModuleCheckTest {
protected:
    /// The reason why a file of these bytes isn't loaded.
    [[nodiscard]] std::string loadReason(const std::string& bytes) const {
        writeBytes(path("file.so"), bytes);
        const Outcome outcome = check({path("file.so"), "--json"});
        EXPECT_EQ(outcome.exitCode, 1) << outcome.error;
        const auto json = nlohmann::json::parse(outcome.output, nullptr, false);
        EXPECT_EQ(resultOf(json, "load")["result"], "failed");
        EXPECT_EQ(resultOf(json, "create")["reason"], "needs the check load, which failed");
        return resultOf(json, "load")["reason"];
    }
};

/// Whether there is a process of that number that hasn't ended yet.
bool isAlive(pid_t process) {
    std::ifstream status("/proc/" + std::to_string(process) + "/stat");
    std::string number;
    std::string name;
    std::string state;
    status >> number >> name >> state;
    return !state.empty() && state != "Z" && state != "X";
}

/// The number in a file that a module writes. Waits for it; 0 if it doesn't come.
pid_t processIn(const std::string& file) {
    pid_t process = 0;
    const bool hasCome = waitUntil([&] { return static_cast<bool>(std::ifstream(file) >> process); });
    return hasCome ? process : 0;
}

TEST_F(ModuleCheck, TheMinimalModulePassesALineACheckAndASummary) {
    const Outcome outcome = check({minimalModule, "--seed", "5", "--timeout", "60"});
    EXPECT_EQ(outcome.exitCode, 0) << outcome.output;
    EXPECT_EQ(outcome.error, "");
    EXPECT_TRUE(outcome.output.starts_with("load           passed\n")) << outcome.output;
    EXPECT_NE(outcome.output.find("\nparameters     skipped  the module has no ZRDSPAPI_SetParameter\n"),
              std::string::npos);
    EXPECT_NE(
        outcome.output.find(
            "\nexports        warning  lacks ZRDSPAPI_IsInputFormatSupported (every input format is taken as it is), "),
        std::string::npos);
    EXPECT_NE(outcome.output.find("\n\n17 checks of " + std::string(minimalModule) + ", seed 5: "),
              std::string::npos)
        << outcome.output;
    EXPECT_EQ(outcome.output.find("failed"), std::string::npos) << outcome.output;
}

TEST_F(ModuleCheck, AFaultIsTheExitCodeOneAndComesWithTheCommandThatShowsItAgain) {
    const std::string module = path("it's a fault.so");
    std::filesystem::copy(faultyModule("create_fails"), module);
    const Outcome outcome = check({module, "--seed", "5", "--only", "create"});
    EXPECT_EQ(outcome.exitCode, 1);
    const std::string quoted = "'" + folder.string() + "/it'\\''s a fault.so'";
    EXPECT_EQ(outcome.output,
              "create         failed   ZRDSPAPI_Create gives null for every document\n"
              "\n"
              "To see it again:\n"
              "  korva module check " +
                  quoted + " --only create --seed 5\n\n1 check of " + module + ", seed 5: 1 failed\n");
}

TEST_F(ModuleCheck, TheCommandThatShowsItAgainIsRight) {
    const auto json = checkJson({faultyModule("scribbler"), "--only", "load,unused-planes"});
    EXPECT_EQ(resultOf(json, "unused-planes")["again"],
              "korva module check " + faultyModule("scribbler") + " --only unused-planes --seed " +
                  std::to_string(json["seed"].get<std::uint32_t>()));
    const auto again = checkJson({faultyModule("scribbler"), "--only", "unused-planes", "--seed",
                                  std::to_string(json["seed"].get<std::uint32_t>())});
    EXPECT_EQ(resultOf(again, "unused-planes")["reason"], resultOf(json, "unused-planes")["reason"]);
}

TEST_F(ModuleCheck, OnlyRunsWhatItNames) {
    const auto json = checkJson({minimalModule, "--only", "table,load"});
    ASSERT_EQ(json["checks"].size(), 2U);
    EXPECT_EQ(json["checks"][0]["name"], "load");
    EXPECT_EQ(json["checks"][1]["name"], "table");
    EXPECT_EQ(json["passed"], 2);
    EXPECT_EQ(json["failed"], 0);
    EXPECT_EQ(json["module"], minimalModule);
    EXPECT_TRUE(json["checks"][0]["seconds"].is_number());
}

TEST_F(ModuleCheck, OnlyOfAnUnknownNameIsAnErrorThatNamesAll) {
    EXPECT_TRUE(failedWith(check({minimalModule, "--only", "load,laod"}), {"'laod'", "unused-planes"}));
}

TEST_F(ModuleCheck, ANeededCheckThatWasNotAskedForIsNoObstacle) {
    const auto json = checkJson({faultyModule("create_fails"), "--only", "bounds"});
    EXPECT_EQ(resultOf(json, "bounds")["result"], "failed");
    EXPECT_EQ(resultOf(json, "bounds")["reason"], "ZRDSPAPI_Create gives null for every document");
}

TEST_F(ModuleCheck, ListNamesTheChecksAndNeedsNoModule) {
    const Outcome outcome = check({"--list"});
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_TRUE(outcome.output.starts_with("load           is a library that this system loads\n"));
    const auto json = checkJson({"--list"});
    ASSERT_EQ(json.size(), 17U);
    EXPECT_EQ(json[0]["name"], "load");
    EXPECT_FALSE(json[0]["claim"].get<std::string>().empty());
}

TEST_F(ModuleCheck, APathThatCannotBeReadIsAnError) {
    EXPECT_TRUE(failedWith(check({path("none.so")}), {"none.so", "No such file"}));
    EXPECT_TRUE(failedWith(check({folder.string()}), {"it is a folder"}));
    EXPECT_TRUE(failedWith(check({}), {"PATH is required", "korva module check --help"}));
    ASSERT_EQ(mkfifo(path("pipe").c_str(), 0600), 0);
    EXPECT_TRUE(failedWith(check({path("pipe")}), {"it is no file"}));
    writeBytes(path("locked.so"), "x");
    std::filesystem::permissions(path("locked.so"), std::filesystem::perms::none);
    Launch launch = checkLaunch({path("locked.so")});
    launch.obeysPermissions = true;
    EXPECT_TRUE(failedWith(run(launch), {"locked.so", "Permission denied"}));
}

TEST_F(ModuleCheck, WhatIsNoLibraryOfThisSystemFailsWithTheReason) {
    EXPECT_EQ(loadReason(""), "can't be loaded: not a library: it is empty");
    EXPECT_EQ(loadReason("no library at all, but a text of some length that is read as one all the same"),
              "can't be loaded: not a library, by its first bytes");
    EXPECT_EQ(loadReason("MZ\x90 and so on"), "can't be loaded: a library or program for Windows");
}

TEST_F(ModuleCheck, ALibraryOfAnotherMachineFailsWithTheReason) {
    std::string bytes = readBytes(minimalModule);
    Elf64_Ehdr header;
    std::memcpy(&header, bytes.data(), sizeof(header));
    const auto reasonWith = [&](const auto& change) {
        Elf64_Ehdr changed = header;
        change(changed);
        std::memcpy(bytes.data(), &changed, sizeof(changed));
        return loadReason(bytes);
    };
    EXPECT_TRUE(reasonWith([](Elf64_Ehdr& changed) {
                    changed.e_machine = EM_S390;
                }).starts_with("can't be loaded: for another machine: number 22 of 64 bit; this one is "));
    EXPECT_EQ(reasonWith([](Elf64_Ehdr& changed) { changed.e_type = ET_REL; }),
              "can't be loaded: not a library, but a program or a part of one");
}

TEST_F(ModuleCheck, ALibraryThatIsCutShortFailsWithTheReason) {
    const std::string whole = readBytes(minimalModule);
    EXPECT_TRUE(loadReason(whole.substr(0, 100)).starts_with("can't be loaded: "));
    EXPECT_TRUE(loadReason(whole.substr(0, 3000))
                    .starts_with("can't be loaded: cut short: it has 3000 of at least "));
}

TEST_F(ModuleCheck, ARelativePathIsTakenFromTheCurrentFolder) {
    const auto json = checkJson({std::filesystem::relative(minimalModule).string(), "--only", "load"});
    EXPECT_EQ(resultOf(json, "load")["result"], "passed") << json;
}

TEST_F(ModuleCheck, AModuleThatHangsIsEndedWithTheLimit) {
    const auto begin = std::chrono::steady_clock::now();
    const auto json = checkJson({faultyModule("hangs"), "--only", "create", "--timeout", "0.3"});
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(30));
    EXPECT_EQ(resultOf(json, "create")["result"], "failed");
    EXPECT_TRUE(resultOf(json, "create")["reason"].get<std::string>().starts_with(
        "did not come back within 0.3 s in ZRDSPAPI_Initialize"))
        << json;
    EXPECT_TRUE(resultOf(json, "create")["again"].get<std::string>().ends_with(" --timeout 0.3"));
}

TEST_F(ModuleCheck, AModuleThatHangsInAnotherGroupIsEndedWithTheLimit) {
    const auto json = checkJson({faultyModule("leaves_group"), "--only", "create", "--timeout", "0.3"});
    EXPECT_TRUE(resultOf(json, "create")["reason"].get<std::string>().starts_with("did not come back within"))
        << json;
}

TEST_F(ModuleCheck, AProcessThatAModuleLeavesBehindIsEnded) {
    Launch launch = checkLaunch({faultyModule("forks"), "--only", "create", "--timeout", "1"});
    launch.environment["FORKED_PROCESS"] = path("process");
    EXPECT_EQ(run(launch).exitCode, 1);
    const pid_t process = processIn(path("process"));
    ASSERT_GT(process, 0);
    EXPECT_FALSE(isAlive(process));
}

TEST_F(ModuleCheck, ASignalEndsTheToolAndAllThatTheModuleStarted) {
    Launch launch = checkLaunch({faultyModule("forks"), "--only", "create", "--timeout", "300"});
    launch.environment["FORKED_PROCESS"] = path("process");
    ChildProcess child(launch);
    const pid_t process = processIn(path("process"));
    ASSERT_GT(process, 0);
    child.send(SIGINT);
    const Outcome outcome = child.wait();
    EXPECT_EQ(outcome.exitCode, 130);
    EXPECT_EQ(outcome.output, "");
    EXPECT_EQ(outcome.error, "korva: error: interrupted\n");
    EXPECT_FALSE(isAlive(process));
}

TEST_F(ModuleCheck, ACheckEndsWithAToolThatIsKilled) {
    Launch launch = checkLaunch({faultyModule("hangs"), "--only", "create", "--timeout", "300"});
    launch.environment["HANGING_PROCESS"] = path("process");
    ChildProcess child(launch);
    const pid_t process = processIn(path("process"));
    ASSERT_GT(process, 0);
    EXPECT_TRUE(isAlive(process));
    child.send(SIGKILL);
    EXPECT_EQ(child.wait().signal, SIGKILL);
    EXPECT_TRUE(waitUntil([&] { return !isAlive(process); }));
}

TEST_F(ModuleCheck, WhatAModulePrintsIsNotMixedWithTheResults) {
    const Outcome outcome = check({faultyModule("hangs"), "--only", "create", "--timeout", "0.3", "--json"});
    EXPECT_TRUE(nlohmann::json::accept(outcome.output)) << outcome.output;
    EXPECT_EQ(outcome.error, "");
}

TEST_F(ModuleCheck, AnImpossibleLimitIsAnError) {
    EXPECT_TRUE(failedWith(check({minimalModule, "--timeout", "0"}), {"--timeout"}));
    EXPECT_TRUE(failedWith(check({minimalModule, "--timeout", "soon"}), {"--timeout"}));
    EXPECT_TRUE(failedWith(check({minimalModule, "--timeout", "nan"}), {"--timeout", "'nan'"}));
    EXPECT_TRUE(failedWith(check({minimalModule, "--seed", "-1"}), {"--seed"}));
}

TEST_F(ModuleCheck, HelpShowsHowItIsUsed) {
    const Outcome outcome = runTool({"module", "--help"});
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_NE(outcome.output.find("docs/modules.md"), std::string::npos) << outcome.output;
    EXPECT_TRUE(failedWith(runTool({"module"}), {"subcommand", "korva module --help"}));
}

}  // namespace
}  // namespace korva::test
