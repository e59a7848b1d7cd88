#include "korva/doctor/registration_check.h"

#include <gtest/gtest.h>

#include <fstream>
#include <map>
#include <vector>

#include "apo/registration/server_registration.h"
#include "korva/file_path.h"
#include "platform/stored_values.h"
#include "platform/unicode.h"
#include "tests/support/own_folder.h"

namespace korva::tool {
namespace {

using platform::RegistryChange;
using platform::RegistryValue;
using platform::stringValue;
using platform::toWide;

/// A registry with all that a registration writes, of which tests take or change some.
class RegistrationCheck : public testing::Test {
protected:
    RegistrationCheck() {
        std::ofstream(library) << "a library";
        expected = apo::serverValues(library);
        for (const RegistryChange& value : expected) {
            registered[{value.path, value.name}] = value.value;
        }
    }

    [[nodiscard]] Findings findings() const {
        return registrationFindings(
            expected,
            [&](const RegistryChange& value) {
                const auto found = registered.find({value.path, value.name});
                return found == registered.end() ? std::nullopt : std::optional(found->second);
            },
            library, "korva register");
    }

    /// The only finding.
    [[nodiscard]] Finding finding() const {
        const Findings all = findings();
        EXPECT_EQ(all.size(), 1u);
        const Finding only = all.empty() ? Finding() : all.front();
        EXPECT_EQ(only.subject, Subject::registration);
        EXPECT_EQ(only.severity, Severity::fault);
        EXPECT_EQ(only.remedy, "korva register");
        return only;
    }

    /// Names another library wherever this one is named.
    void pointAt(const std::string& text) {
        const RegistryValue own = stringValue(toWide(textOfPath(library)));
        for (auto& [place, value] : registered) {
            if (value.data == own.data) {
                value = stringValue(toWide(text));
            }
        }
    }

    const test::OwnFolder folder;
    const std::filesystem::path library = folder.path() / "libKORVA.so";
    std::vector<RegistryChange> expected;
    std::map<std::pair<std::string, std::string>, RegistryValue> registered;
};

const std::string streamClass = "CLSID\\{F71CA881-A2E0-43D1-9B8D-CEF14AA0D58D}";
const std::string streamObject =
    "AudioEngine\\AudioProcessingObjects\\{F71CA881-A2E0-43D1-9B8D-CEF14AA0D58D}";

TEST_F(RegistrationCheck, FindsNothingWhereAllIsThere) {
    EXPECT_TRUE(findings().empty());
}

TEST_F(RegistrationCheck, IsOneFindingWhereNothingIsThere) {
    registered.clear();
    EXPECT_NE(finding().what.find("is not registered"), std::string::npos);
}

TEST_F(RegistrationCheck, NamesAMissingValueAndItsKey) {
    registered.erase({streamObject, "Flags"});
    EXPECT_EQ(finding().what, "The registration in 'HKEY_CLASSES_ROOT\\" + streamObject + "' is not whole.");
    EXPECT_EQ(finding().cause, "It lacks 'Flags'.");
}

TEST_F(RegistrationCheck, IsOneFindingForEachKey) {
    registered.erase({streamObject, "Flags"});
    registered.erase({streamObject, "MaxInstances"});
    registered[{streamObject, "MajorVersion"}] = platform::numberValue(7);
    EXPECT_EQ(finding().cause,
              "It lacks 'Flags' and 'MaxInstances'. 'MajorVersion' is not what a registration writes.");
    registered.erase({streamClass, ""});
    EXPECT_EQ(findings().size(), 2u);
}

TEST_F(RegistrationCheck, EveryValueCountsAlone) {
    for (const RegistryChange& value : expected) {
        const auto place = std::pair(value.path, value.name);
        registered.erase(place);
        EXPECT_EQ(finding().cause.find("It lacks "), 0u) << value.path << ' ' << value.name;
        registered[place] = {platform::registry_type::binary, {}};
        EXPECT_NE(finding().cause.find("is not what a registration writes"), std::string::npos)
            << value.path << ' ' << value.name;
        registered[place] = value.value;
    }
}

TEST_F(RegistrationCheck, AnotherLibraryInAllPlacesIsOneFinding) {
    pointAt("/elsewhere/libKORVA.so");
    EXPECT_EQ(finding().what, "Hosts load '/elsewhere/libKORVA.so' in place of this library.");
    EXPECT_NE(finding().cause.find("no such file"), std::string::npos);
    const std::filesystem::path other = folder.path() / "other.so";
    std::ofstream(other) << "another";
    pointAt(textOfPath(other));
    EXPECT_EQ(finding().what, "Hosts load '/elsewhere/libKORVA.so' in place of this library.");
    for (auto& [place, value] : registered) {
        if (value.data == stringValue(toWide("/elsewhere/libKORVA.so")).data) {
            value = stringValue(toWide(textOfPath(other)));
        }
    }
    EXPECT_NE(finding().cause.find("Another library was registered"), std::string::npos);
}

TEST_F(RegistrationCheck, TheSameFileByAnotherNameIsThisLibrary) {
    pointAt(textOfPath(folder.path() / "." / "libKORVA.so"));
    EXPECT_TRUE(findings().empty());
}

}  // namespace
}  // namespace korva::tool
