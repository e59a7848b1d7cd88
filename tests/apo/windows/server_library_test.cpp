#include <gtest/gtest.h>
#include <windows.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <iterator>
#include <string>
#include <vector>

#include "platform/registry.h"
#include "tests/support/registry_tree.h"
#include "tests/support/run_program.h"

namespace korva {
namespace {

namespace fs = std::filesystem;
using Lines = std::vector<std::string>;

constexpr auto classesRoot = platform::RegistryRoot::classesRoot;
const std::string library = fs::absolute(KORVA_SERVER_LIBRARY).make_preferred().string();

std::string systemProgram(const std::string& name) {
    std::array<char, MAX_PATH> folder{};
    GetSystemDirectoryA(folder.data(), static_cast<UINT>(folder.size()));
    return std::string(folder.data()) + "\\" + name;
}

int regsvr32(std::vector<std::string> options) {
    options.push_back(library);
    return test::runProgram(systemProgram("regsvr32.exe"), options);
}

int classUser(const std::vector<std::string>& words) {
    return test::runProgram(KORVA_CLASS_USER, words);
}

/// The machine's classes, sorted, as lines of text.
Lines machineClasses() {
    return test::treeLines(classesRoot, "");
}

/// What is in `after` and not in `before`.
Lines added(const Lines& before, const Lines& after) {
    Lines lines;
    std::set_difference(after.begin(), after.end(), before.begin(), before.end(), std::back_inserter(lines));
    return lines;
}

void addObject(Lines& lines, const std::string& clsid, const std::string& id, const std::string& name,
               const std::string& flags) {
    const std::string key = "AudioEngine\\AudioProcessingObjects\\" + clsid;
    lines.push_back(key);
    for (const std::string& value :
         {"APOInterface0 = '" + id + "'", std::string("Copyright = 'Copyright (c) the Korva team'"),
          "Flags = " + flags, "FriendlyName = '" + name + "'", std::string("MajorVersion = 1"),
          std::string("MaxInputConnections = 1"), std::string("MaxInstances = 4294967295"),
          std::string("MaxOutputConnections = 1"), std::string("MinInputConnections = 1"),
          std::string("MinOutputConnections = 1"), std::string("MinorVersion = 0"),
          std::string("NumAPOInterfaces = 1")}) {
        lines.push_back(key + " @" + value);
    }
}

void addClass(Lines& lines, const std::string& clsid, const std::string& text) {
    const std::string key = "CLSID\\" + clsid;
    lines.insert(lines.end(), {key, key + " @ = '" + text + "'", key + "\\InprocServer32",
                               key + "\\InprocServer32 @ = '" + library + "'",
                               key + "\\InprocServer32 @ThreadingModel = 'Both'"});
}

/// All that registration adds, but for the type library and for what the system shows twice: the part for
/// programs of 32 bits shares some of its keys.
Lines expectedLines() {
    const std::string mode = "{C26AD82E-B1CB-4BDF-87E9-CACD7FD6C6FD}";
    const std::string stream = "{F71CA881-A2E0-43D1-9B8D-CEF14AA0D58D}";
    const std::string endpoint = "{8F3540DF-18B0-4943-B916-D4A79801587D}";
    const std::string application = "{0A21D954-674A-4C09-806E-DB4FBE8F199C}";
    Lines lines = {"AudioEngine",           "AudioEngine\\AudioProcessingObjects",
                   "AppID\\" + application, "AppID\\" + application + " @ = 'KORVA'",
                   "AppID\\KORVA.DLL",      "AppID\\KORVA.DLL @AppID = '" + application + "'"};
    addObject(lines, mode, "{CE99F2CF-3CEE-4D7F-B682-74906B40D4AC}", "KORVAMFX", "15");
    addObject(lines, stream, "{5AC1067F-C44E-47ED-9472-79D1751CA083}", "KORVASFX", "13");
    addObject(lines, endpoint, "{2E7354F1-E611-457C-95CD-BD4178D88363}", "KORVAEFX", "15");
    addClass(lines, mode, "KORVAGFX Class");
    addClass(lines, stream, "KORVALFX Class");
    addClass(lines, endpoint, "KORVAEFX Class");
    std::sort(lines.begin(), lines.end());
    return lines;
}

bool isOfTypeLibraries(const std::string& line) {
    return line.find("{48E3D58C-375D-4140-8990-8907E4F9418F}") != line.npos;
}

/// The library is registered by the system's own program, and not when the test ends.
class ServerLibrary : public testing::Test {
protected:
    void TearDown() override { static_cast<void>(regsvr32({"/s", "/u"})); }
};

TEST_F(ServerLibrary, IsRegisteredByTheSystemsProgram) {
    const Lines before = machineClasses();
    ASSERT_EQ(regsvr32({"/s"}), 0);

    Lines lines = added(before, machineClasses());
    std::erase_if(lines, [](const std::string& line) {
        return isOfTypeLibraries(line) || line.starts_with("Wow6432Node\\");
    });
    EXPECT_EQ(lines, expectedLines());
}

TEST_F(ServerLibrary, IsTheFileOfItsTypeLibrary) {
    ASSERT_EQ(regsvr32({"/s"}), 0);

    const std::string place = "TypeLib\\{48E3D58C-375D-4140-8990-8907E4F9418F}\\1.0";
    EXPECT_EQ(test::valueAt(classesRoot, place, ""), "'KORVA 1.0 Type Library'");
    EXPECT_EQ(test::valueAt(classesRoot, place + "\\0\\win64", ""), "'" + library + "'");
    EXPECT_EQ(test::valueAt(classesRoot, place + "\\HELPDIR", ""),
              "'" + fs::path(library).parent_path().string() + "'");
}

TEST_F(ServerLibrary, LeavesTheMachineAsItWas) {
    const Lines before = machineClasses();
    ASSERT_EQ(regsvr32({"/s"}), 0);
    ASSERT_NE(machineClasses(), before);

    EXPECT_EQ(regsvr32({"/s", "/u"}), 0);

    EXPECT_EQ(machineClasses(), before);
}

TEST_F(ServerLibrary, MayBeRegisteredAndTakenBackTwice) {
    const Lines before = machineClasses();
    EXPECT_EQ(regsvr32({"/s"}), 0);
    const Lines once = machineClasses();
    EXPECT_EQ(regsvr32({"/s"}), 0);
    EXPECT_EQ(machineClasses(), once);

    EXPECT_EQ(regsvr32({"/s", "/u"}), 0);
    EXPECT_EQ(regsvr32({"/s", "/u"}), 0);
    EXPECT_EQ(machineClasses(), before);
}

TEST_F(ServerLibrary, GivesAnotherProcessObjectsOfEachClassAndGoesWithThem) {
    ASSERT_EQ(regsvr32({"/s"}), 0);
    EXPECT_EQ(classUser({}), 0);
}

TEST_F(ServerLibrary, IsUnknownToAnotherProcessOnceItIsTakenBack) {
    EXPECT_EQ(classUser({"absent"}), 0);
    ASSERT_EQ(regsvr32({"/s"}), 0);
    ASSERT_NE(classUser({"absent"}), 0);

    ASSERT_EQ(regsvr32({"/s", "/u"}), 0);

    EXPECT_EQ(classUser({"absent"}), 0);
}

}  // namespace
}  // namespace korva
