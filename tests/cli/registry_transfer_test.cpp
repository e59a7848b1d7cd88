#include <csignal>

#include "tests/cli/registry_tool_test.h"
#include "tests/support/wait_until.h"

namespace korva::test {
namespace {

const std::string head = "Windows Registry Editor Version 5.00\r\n\r\n";
const std::string key = "HKEY_LOCAL_MACHINE\\Software\\Demo";

class RegistryTransfer : public RegistryToolTest {
protected:
    /// What comes of the import of a file.
    [[nodiscard]] Outcome import(const std::string& text) const {
        writeBytes(path("a.reg"), text);
        return registry({"import", path("a.reg")});
    }
    [[nodiscard]] bool hasKey(const std::string& wanted) const {
        return registry({"list", wanted}).exitCode == 0;
    }
};

TEST_F(RegistryTransfer, ExportsAKeyWithAllBelowItAsUtf16) {
    quietly({"set", key, "n", "dword", "18"});
    quietly({"set", key, "@", "sz", "a \"b\" \xC3\xA4"});
    quietly({"set", key + "\\Sub", "b", "binary", "00ff"});
    quietly({"create", "HKLM\\Software\\Demo2"});
    EXPECT_EQ(exported("hklm\\SOFTWARE\\Demo"),
              "\xEF\xBB\xBFWindows Registry Editor Version 5.00\r\n"
              "\r\n[HKEY_LOCAL_MACHINE\\SOFTWARE\\Demo]\r\n"
              "\"n\"=dword:00000012\r\n"
              "@=\"a \\\"b\\\" \xC3\xA4\"\r\n"
              "\r\n[HKEY_LOCAL_MACHINE\\SOFTWARE\\Demo\\Sub]\r\n"
              "\"b\"=hex:00,ff\r\n"
              "\r\n");
}

TEST_F(RegistryTransfer, ImportsWhatItExportedToTheByte) {
    ASSERT_TRUE(
        succeededQuietly(import(head + "[" + key +
                                "]\n@=\"x\"\n\"odd\"=hex(1):61,00,62\n\"none\"=hex(0):\n\"any\"=hex(ffff0000)"
                                ":01\n\"short\"=hex(4):01\n[" +
                                key + "\\Sub\\]x]\n\"a\\nb\"=hex(7):00,00\n")));
    const std::string first = output({"export", key});
    quietly({"delete", key});
    writeBytes(path("a.reg"), first);
    quietly({"import", path("a.reg")});
    EXPECT_EQ(output({"export", key}), first);
}

TEST_F(RegistryTransfer, ExportsAndImportsARoot) {
    quietly({"set", "HKCU", "n", "sz", "x"});
    quietly({"set", "HKCU\\A", "n", "sz", "y"});
    const std::string first = output({"export", "HKCU"});
    quietly({"delete", "HKCU\\A"});
    quietly({"delete", "HKCU", "n"});
    writeBytes(path("a.reg"), first);
    quietly({"import", path("a.reg")});
    EXPECT_EQ(output({"export", "HKCU"}), first);
}

TEST_F(RegistryTransfer, ImportsFromStandardInput) {
    EXPECT_TRUE(succeededQuietly(registryReading(head + "[" + key + "]\n\"n\"=\"x\"\n", {"import", "-"})));
    EXPECT_EQ(output({"get", key, "n"}), "x\n");
    EXPECT_TRUE(failedWith(registryReading("", {"import", "-"}), {"standard input", "it is empty"}));
    EXPECT_TRUE(failedWith(registryReading("\n", {"import", "-"}), {"standard input:1: expected 'Windows"}));
}

TEST_F(RegistryTransfer, DeletesWhatATextSays) {
    quietly({"set", key, "n", "sz", "x"});
    quietly({"set", key, "m", "sz", "y"});
    quietly({"create", "HKCU\\A\\B"});
    EXPECT_TRUE(
        succeededQuietly(import(head + "[-HKCU\\A]\n[-HKCU\\Never]\n[" + key + "]\n\"n\"=-\n\"never\"=-\n")));
    EXPECT_FALSE(hasKey("HKCU\\A"));
    EXPECT_FALSE(hasKey("HKCU\\Never"));
    EXPECT_TRUE(failedWith(registry({"get", key, "n"}), {"no value"}));
    EXPECT_EQ(output({"get", key, "m"}), "y\n");
}

TEST_F(RegistryTransfer, NamesFileAndLineOfAMistakeAndImportsNothing) {
    EXPECT_TRUE(failedWith(import(head + "[" + key + "]\n\"a\"=\"b\"\n\"c\"=\n"),
                           {path("a.reg") + ":5: expected a value behind '='"}));
    EXPECT_FALSE(hasKey(key));
    EXPECT_TRUE(
        failedWith(import(head + "[" + key + "]\n[HKEY_USERS\\A]\n"), {path("a.reg") + ":4: expected"}));
    EXPECT_FALSE(hasKey(key));
}

TEST_F(RegistryTransfer, NamesFileAndLineOfANameThatTheRegistryRefusesAndImportsNothing) {
    EXPECT_TRUE(
        failedWith(import(head + "[" + key + "]\n\"a\"=\"b\"\n[HKLM\\" + std::string(256, 'a') + "]\n"),
                   {path("a.reg") + ":5: ", "too long"}));
    EXPECT_FALSE(hasKey(key));
    EXPECT_TRUE(failedWith(import(head + "[" + key + "]\n\"" + std::string(16384, 'a') + "\"=\"b\"\n"),
                           {path("a.reg") + ":4: ", "too long"}));
    EXPECT_FALSE(hasKey(key));
}

TEST_F(RegistryTransfer, RefusesWhatIsNoReadableFile) {
    EXPECT_TRUE(failedWith(registry({"import", path("none.reg")}), {"none.reg", "No such file"}));
    EXPECT_TRUE(failedWith(registry({"import", folder.string()}), {"it is a folder"}));
    EXPECT_TRUE(failedWith(import(""), {"a.reg", "it is empty"}));
    EXPECT_TRUE(failedWith(import("RIFF"), {"a.reg:1: expected 'Windows Registry Editor"}));
    Launch launch = registryLaunch({"import", path("a.reg")});
    std::filesystem::permissions(path("a.reg"), std::filesystem::perms::none);
    launch.obeysPermissions = true;
    EXPECT_TRUE(failedWith(run(launch), {"a.reg", "Permission denied"}));
}

TEST_F(RegistryTransfer, RefusesWhatHasNoEndWithoutWritingItAnywhere) {
    Launch launch = registryLaunch({"import", "/dev/zero"});
    launch.fileSizeLimit = 1 << 20;
    EXPECT_TRUE(failedWith(run(launch), {"/dev/zero", "larger than 128 MiB"}));
    EXPECT_EQ(namesIn(temporaryFolder), std::vector<std::string>{});
}

TEST_F(RegistryTransfer, CtrlCInTheMiddleOfAnImportLeavesTheRegistryAsItWas) {
    quietly({"create", "HKLM\\Before"});
    std::string text = head + "[" + key + "]\r\n";
    for (int i = 0; i < 300'000; ++i) {
        text += "\"n" + std::to_string(i) + "\"=dword:1\r\n";
    }
    writeBytes(path("a.reg"), text);
    ChildProcess import(registryLaunch({"import", path("a.reg")}));
    // The journal takes what has become too much for memory, long before all is there.
    EXPECT_TRUE(waitUntil([&] {
        std::error_code missing;
        const auto size = std::filesystem::file_size(registryPath() + "-wal", missing);
        return !missing && size > 1 << 20;
    }));
    import.send(SIGINT);
    const Outcome outcome = import.wait();
    EXPECT_EQ(outcome.exitCode, 128 + SIGINT);
    EXPECT_EQ(outcome.error, "korva: error: interrupted\n");
    EXPECT_EQ(output({"list", "HKLM"}), "HKEY_LOCAL_MACHINE\n  Before\\\n");
}

TEST_F(RegistryTransfer, AFileNameWithALineBreakLeavesTheErrorOneLine) {
    writeBytes(path("a\nb.reg"), "x\n");
    EXPECT_TRUE(failedWith(registry({"import", path("a\nb.reg")}), {"a\\x0Ab.reg:1: "}));
}

TEST_F(RegistryTransfer, RefusesToExportAKeyWithALineBreakInItsName) {
    quietly({"create", key + "\\a\nb"});
    EXPECT_TRUE(failedWith(registry({"export", key}), {"Demo\\a\\x0Ab", "line break"}));
}

TEST_F(RegistryTransfer, RefusesToExportAKeyThatPointsElsewhere) {
    quietly({"set", key + "\\Link", "SymbolicLinkValue", "sz", "x"});
    EXPECT_TRUE(failedWith(registry({"export", key}), {"Demo\\Link", "points at another"}));
    EXPECT_TRUE(failedWith(registry({"list", key + "\\Link"}), {"Demo\\Link", "points at another"}));
}

TEST_F(RegistryTransfer, TakesManyValues) {
    std::string text = head + "[" + key + "]\r\n";
    for (int i = 0; i < 5000; ++i) {
        text += "\"n" + std::to_string(i) + "\"=dword:" + std::to_string(i) + "\r\n";
    }
    EXPECT_TRUE(succeededQuietly(import(text)));
    EXPECT_EQ(output({"get", key, "n4999"}), std::to_string(0x4999) + "\n");
}

}  // namespace
}  // namespace korva::test
