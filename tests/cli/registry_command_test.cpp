#include <nlohmann/json.hpp>

#include "tests/cli/registry_tool_test.h"

namespace korva::test {
namespace {

using Json = nlohmann::json;
const std::string key = "HKLM\\Software\\Demo";

class RegistryCommand : public RegistryToolTest {};

TEST_F(RegistryCommand, HelpNamesTheCommandsAndGivesExamples) {
    const std::string help = output({"--help"});
    for (const char* const part : {"list", "get", "set", "create", "delete", "watch", "import", "export",
                                   "HKLM", "KORVA_REGISTRY", "Examples"}) {
        EXPECT_NE(help.find(part), std::string::npos) << part;
    }
    const std::string helpOfSet = output({"set", "--help"});
    for (const char* const part :
         {"KEY", "NAME", "TYPE", "DATA", "sz", "dword", "qword", "binary", "multi_sz"}) {
        EXPECT_NE(helpOfSet.find(part), std::string::npos) << part;
    }
    EXPECT_NE(output({"export", "--help"}).find("UTF-16"), std::string::npos);
}

TEST_F(RegistryCommand, WithoutACommandPointsToHelp) {
    EXPECT_TRUE(failedWith(registry({}), {"subcommand", "korva registry --help"}));
    EXPECT_TRUE(failedWith(registry({"frob"}), {"unknown subcommand 'frob'", "korva registry --help"}));
    EXPECT_TRUE(failedWith(registry({"list"}), {"KEY", "korva registry list --help"}));
    EXPECT_TRUE(failedWith(registry({"list", key, "x"}), {"unexpected argument 'x'"}));
    EXPECT_TRUE(failedWith(registry({"list", key, "--frob"}), {"unknown option '--frob'"}));
}

TEST_F(RegistryCommand, ListShowsSubKeysAndValuesInTheirOrder) {
    quietly({"set", key, "volume", "dword", "40"});
    quietly({"set", key, "@", "sz", "text"});
    quietly({"set", key, "bin", "binary", "00ff"});
    quietly({"set", key, "files", "multi_sz", "a", "b c"});
    quietly({"create", key + "\\Sub\\Lower"});
    quietly({"create", key + "\\Other"});
    EXPECT_EQ(output({"list", key}),
              "HKEY_LOCAL_MACHINE\\Software\\Demo\n"
              "  Sub\\\n"
              "  Other\\\n"
              "  volume  dword     40 (0x00000028)\n"
              "  @       sz        \"text\"\n"
              "  bin     binary    00ff\n"
              "  files   multi_sz  \"a\", \"b c\"\n");
}

TEST_F(RegistryCommand, ListIsOneJsonValueIfAsked) {
    quietly({"set", key, "volume", "dword", "40"});
    quietly({"set", key, "@", "sz", "text"});
    quietly({"create", key + "\\Sub"});
    const Json expected = {{"key", "HKEY_LOCAL_MACHINE\\Software\\Demo"},
                           {"keys", {"Sub"}},
                           {"values",
                            {{{"name", "volume"}, {"type", "dword"}, {"data", 40}},
                             {{"name", ""}, {"type", "sz"}, {"data", "text"}}}}};
    EXPECT_EQ(Json::parse(output({"list", key, "--json"})), expected);
    const Json empty = {{"key", "HKEY_LOCAL_MACHINE\\Software\\Demo\\Sub"},
                        {"keys", Json::array()},
                        {"values", Json::array()}};
    EXPECT_EQ(Json::parse(output({"list", key + "\\Sub", "--json"})), empty);
}

TEST_F(RegistryCommand, ListGivesEachNameAndTextOneLine) {
    quietly({"set", key, "a\nb", "sz", "c\nd\x1B[2J"});
    quietly({"create", key + "\\e\nf"});
    EXPECT_EQ(output({"list", key}),
              "HKEY_LOCAL_MACHINE\\Software\\Demo\n"
              "  e\\x0Af\\\n"
              "  a\\x0Ab  sz        \"c\\x0Ad\\x1B[2J\"\n");
}

TEST_F(RegistryCommand, ListCutsLongBytesAndSaysHowManyThereAre) {
    quietly({"set", key, "n", "binary", std::string(66, 'a')});
    EXPECT_EQ(output({"list", key}), "HKEY_LOCAL_MACHINE\\Software\\Demo\n  n  binary    " +
                                         std::string(64, 'a') + "... (33 bytes)\n");
}

TEST_F(RegistryCommand, RootsCanBeListedInARegistryThatIsNew) {
    for (const char* const name : {"HKLM", "hkcu", "HKEY_CLASSES_ROOT", "HKLM\\"}) {
        EXPECT_EQ(registry({"list", name}).exitCode, 0) << name;
    }
}

TEST_F(RegistryCommand, KeysAreFoundWithoutRegardToCase) {
    quietly({"set", key, "Name", "sz", "x"});
    EXPECT_EQ(output({"get", "hkey_local_machine\\SOFTWARE\\demo", "NAME"}), "x\n");
}

TEST_F(RegistryCommand, ASlashIsPartOfAName) {
    quietly({"set", "HKLM\\a/b", "n", "sz", "x"});
    EXPECT_EQ(output({"get", "HKLM\\a/b", "n"}), "x\n");
    EXPECT_TRUE(failedWith(registry({"list", "HKLM\\a"}), {"no key"}));
}

TEST_F(RegistryCommand, ClassesAreThoseOfTheMachine) {
    quietly({"set", "HKCR\\Demo", "n", "sz", "x"});
    EXPECT_EQ(output({"get", "HKLM\\Software\\Classes\\Demo", "n"}), "x\n");
}

TEST_F(RegistryCommand, AWordThatIsNoKeyIsRefused) {
    for (const char* const word : {"", "HKU\\A", "HKEY_USERS", "Software", "\\", "HKLM/A", "HKLMx"}) {
        EXPECT_TRUE(failedWith(registry({"list", word}),
                               {"'" + std::string(word) + "' is no key", "HKLM, HKCU or HKCR"}))
            << word;
    }
    for (const char* const word : {"HKLM\\a\\\\b", "HKLM\\\\a", "HKLM\\a\\\\"}) {
        EXPECT_TRUE(failedWith(registry({"create", word}), {"between the key's backslashes"})) << word;
    }
}

TEST_F(RegistryCommand, WhatIsMissingIsNamed) {
    quietly({"create", key});
    EXPECT_TRUE(
        failedWith(registry({"get", key, "n"}), {"no value 'n'", "HKEY_LOCAL_MACHINE\\Software\\Demo"}));
    EXPECT_TRUE(failedWith(registry({"get", key, "@"}), {"no value '@'"}));
    EXPECT_TRUE(failedWith(registry({"delete", key, "n"}), {"no value 'n'"}));
    for (const std::vector<std::string>& command :
         {std::vector<std::string>{"list"}, {"get"}, {"delete"}, {"export"}}) {
        std::vector<std::string> arguments = {command[0], key + "\\Gone"};
        if (command[0] == "get") {
            arguments.emplace_back("n");
        }
        EXPECT_TRUE(failedWith(registry(arguments), {"no key", "Demo\\Gone", registryPath()})) << command[0];
    }
}

TEST_F(RegistryCommand, TooLongNamesAreRefused) {
    EXPECT_TRUE(failedWith(registry({"create", "HKLM\\" + std::string(256, 'a')}), {"too long", "255"}));
    quietly({"create", "HKLM\\" + std::string(255, 'a')});
    EXPECT_TRUE(
        failedWith(registry({"set", key, std::string(16384, 'a'), "sz", "x"}), {"too long", "16383"}));
    quietly({"set", key, std::string(16383, 'a'), "sz", "x"});
    EXPECT_EQ(output({"get", key, std::string(16383, 'a')}), "x\n");
    EXPECT_NE(output({"list", key}).find(std::string(16383, 'a') + "  sz"), std::string::npos);
}

TEST_F(RegistryCommand, AValueThatIsRefusedMakesNoKey) {
    EXPECT_TRUE(failedWith(registry({"set", key, "\xFF", "sz", "x"}), {"not UTF-8"}));
    EXPECT_TRUE(failedWith(registry({"list", "HKLM\\Software"}), {"no key"}));
}

TEST_F(RegistryCommand, ARootHasValuesAsWell) {
    quietly({"set", "HKCU", "n", "sz", "x"});
    EXPECT_EQ(output({"get", "HKCU\\", "n"}), "x\n");
}

TEST_F(RegistryCommand, KeysAreAsDeepAsTheRegistryLets) {
    std::string deepest = "HKLM";
    for (int part = 0; part < 512; ++part) {
        deepest += "\\k";
    }
    quietly({"set", deepest, "n", "sz", "x"});
    EXPECT_EQ(output({"get", deepest, "n"}), "x\n");
    EXPECT_TRUE(failedWith(registry({"create", deepest + "\\k"}), {"deeper than 512"}));
    EXPECT_NE(exported("HKLM").find(deepest.substr(4) + "]\r\n\"n\"=\"x\""), std::string::npos);
    quietly({"delete", "HKLM\\k"});
}

TEST_F(RegistryCommand, CreateMakesAKeyAndLeavesOneThatIsThere) {
    quietly({"create", key});
    quietly({"set", key, "n", "sz", "x"});
    quietly({"create", key});
    EXPECT_EQ(output({"get", key, "n"}), "x\n");
}

TEST_F(RegistryCommand, DeleteTakesAValueAndLeavesItsKey) {
    quietly({"set", key, "n", "sz", "x"});
    quietly({"set", key, "@", "sz", "y"});
    quietly({"delete", key, "n"});
    EXPECT_EQ(output({"list", key}), "HKEY_LOCAL_MACHINE\\Software\\Demo\n  @  sz        \"y\"\n");
    quietly({"delete", key, "@"});
    EXPECT_EQ(output({"list", key}), "HKEY_LOCAL_MACHINE\\Software\\Demo\n");
}

TEST_F(RegistryCommand, DeleteOfAnEmptyNameLeavesTheKey) {
    quietly({"set", key, "n", "sz", "x"});
    EXPECT_TRUE(failedWith(registry({"delete", key, ""}), {"no value '@'"}));
    EXPECT_EQ(output({"get", key, "n"}), "x\n");
}

TEST_F(RegistryCommand, DeleteTakesAKeyWithAllBelowIt) {
    quietly({"set", key + "\\Sub\\Lower", "n", "sz", "x"});
    quietly({"delete", key});
    EXPECT_TRUE(failedWith(registry({"list", key}), {"no key"}));
    EXPECT_EQ(registry({"list", "HKLM\\Software"}).exitCode, 0);
}

TEST_F(RegistryCommand, DeleteRefusesRoots) {
    for (const char* const name : {"HKLM", "HKCU\\", "HKEY_CLASSES_ROOT"}) {
        EXPECT_TRUE(failedWith(registry({"delete", name}), {"root", "can't be deleted"})) << name;
    }
}

TEST_F(RegistryCommand, ANameThatIsACommandIsAName) {
    quietly({"set", "HKLM\\list", "get", "sz", "set"});
    EXPECT_EQ(output({"get", "HKLM\\list", "get"}), "set\n");
    quietly({"delete", "HKLM\\list", "get"});
}

TEST_F(RegistryCommand, OutputThatCannotBePrintedIsAnError) {
    quietly({"set", key, "n", "sz", "x"});
    for (const std::vector<std::string>& arguments :
         {std::vector<std::string>{"list", key}, {"get", key, "n"}, {"export", key}}) {
        Launch launch = registryLaunch(arguments);
        launch.outputPath = "/dev/full";
        EXPECT_TRUE(failedWith(run(launch), {"standard output", "No space left"})) << arguments[0];
        launch = registryLaunch(arguments);
        launch.closedStreams = {1};
        EXPECT_TRUE(failedWith(run(launch), {"standard output"})) << arguments[0];
    }
}

}  // namespace
}  // namespace korva::test
