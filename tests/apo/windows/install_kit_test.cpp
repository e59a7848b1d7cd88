// What Windows' own installer writes from the INF files of packaging/windows, against what their reader of
// these tests says that they ask for.
#include <windows.h>

#include <setupapi.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include "tests/apo/inf_file.h"
#include "tests/support/own_registry.h"
#include "tests/support/registry_tree.h"

namespace korva::apo {
namespace {

using platform::RegistryAccess;
using platform::RegistryKey;
using platform::RegistryRoot;
using Lines = std::vector<std::string>;

constexpr auto localMachine = RegistryRoot::localMachine;

std::filesystem::path infPath(const std::string& name) {
    return std::filesystem::absolute(std::filesystem::path(KORVA_INSTALL_KIT) / "inf" / name)
        .make_preferred();
}

class InstallKit : public testing::TestWithParam<std::pair<const char*, const char*>> {
protected:
    /// A key of the test's own, for the root that lines leave open.
    RegistryKey place(const std::string& name) const {
        RegistryKey key;
        EXPECT_EQ(
            RegistryKey::root(localMachine).create(own.key() + "\\" + name, RegistryAccess::readWrite, key),
            0);
        return key;
    }

    /// What the installer makes of the registry values of a section.
    void installSection(const std::filesystem::path& file, const std::string& section,
                        const std::string& name) const {
        const RegistryKey key = place(name);
        UINT line = 0;
        const HINF inf = SetupOpenInfFileW(file.c_str(), nullptr, INF_STYLE_WIN4, &line);
        ASSERT_NE(inf, INVALID_HANDLE_VALUE) << file << ", line " << line << ", error " << GetLastError();
        EXPECT_TRUE(SetupInstallFromInfSectionA(nullptr, inf, section.c_str(), SPINST_REGISTRY,
                                                reinterpret_cast<HKEY>(key.handle()), nullptr, 0, nullptr,
                                                nullptr, nullptr, nullptr))
            << GetLastError();
        SetupCloseInfFile(inf);
    }

    /// But for the library's path, which has the folder of the driver in it.
    Lines linesBelow(const std::string& name) const {
        Lines lines = test::treeLines(localMachine, own.key() + "\\" + name);
        std::erase_if(lines, [](const std::string& line) {
            return line.find("InprocServer32 @ = type 2 ") != line.npos;
        });
        return lines;
    }

    test::OwnRegistry own;
};

TEST_P(InstallKit, IsReadByTheInstallerAsByTheseTests) {
    const auto& [file, section] = GetParam();
    auto values = test::InfFile::at(infPath(file).string()).addedValues(section);
    std::erase_if(values, [](const test::InfRegistryValue& value) { return value.root != "HKR"; });
    ASSERT_EQ(test::writeValues(place("Expected"), values), 0);

    installSection(infPath(file), section, "Installed");

    EXPECT_FALSE(linesBelow("Expected").empty());
    EXPECT_EQ(linesBelow("Installed"), linesBelow("Expected"));
    static_cast<void>(RegistryKey::root(localMachine).deleteTree("Software\\Kestrelwright"));
}

INSTANTIATE_TEST_SUITE_P(Sections, InstallKit,
                         testing::Values(std::pair("korva_component_10.inf", "Korva.Install"),
                                         std::pair("korva_component_11.inf", "Korva.Install"),
                                         std::pair("korva_extension.inf", "Korva.Topology10"),
                                         std::pair("korva_extension.inf", "Korva.Topology11")));

TEST_F(InstallKit, MakesTheTelemetryKey) {
    ASSERT_FALSE(test::hasKey(localMachine, "Software\\Kestrelwright"));
    installSection(infPath("korva_component_11.inf"), "Korva.Install", "Installed");
    EXPECT_TRUE(test::hasKey(localMachine, "Software\\Kestrelwright"));
    EXPECT_EQ(RegistryKey::root(localMachine).deleteTree("Software\\Kestrelwright"), 0);
}

}  // namespace
}  // namespace korva::apo
