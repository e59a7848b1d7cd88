#include "apo/registration/apo_registration.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "apo/effect_class.h"
#include "platform/published/results.h"
#include "platform/registry_values.h"
#include "platform/stored_values.h"
#include "tests/support/own_registry.h"
#include "tests/support/registry_tree.h"

namespace korva::apo {
namespace {

using platform::RegistryAccess;
using platform::RegistryKey;
using platform::RegistryRoot;
using test::hasKey;
using test::treeLines;
using test::valueAt;
using Lines = std::vector<std::string>;

constexpr auto classes = RegistryRoot::classesRoot;
const std::string list = "AudioEngine\\AudioProcessingObjects";
/// {0D9C4C3C-61B4-4E0C-9C5E-6C7B8C0A6E11}: nobody's.
constexpr CLSID someClass = {0x0D9C4C3C, 0x61B4, 0x4E0C, {0x9C, 0x5E, 0x6C, 0x7B, 0x8C, 0x0A, 0x6E, 0x11}};
const std::string place = list + "\\{0D9C4C3C-61B4-4E0C-9C5E-6C7B8C0A6E11}";

APO_REG_PROPERTIES someRecord() {
    APO_REG_PROPERTIES record = recordOf(someClass, published::iidOf<IKORVASFX>, "Some object", 13);
    record.u32MajorVersion = 2;
    record.u32MinorVersion = 3;
    record.u32MinInputConnections = 4;
    record.u32MaxInputConnections = 5;
    record.u32MinOutputConnections = 6;
    record.u32MaxOutputConnections = 7;
    record.u32MaxInstances = 8;
    return record;
}

/// A record with more interfaces than its declaration has room for: the n-th begins with n + 1.
class LongRecord {
public:
    explicit LongRecord(std::uint32_t count) : bytes(sizeof(APO_REG_PROPERTIES) + count * sizeof(IID)) {
        APO_REG_PROPERTIES record = someRecord();
        record.u32NumAPOInterfaces = count;
        std::memcpy(bytes.data(), &record, sizeof(record));
        for (std::uint32_t i = 0; i < count; ++i) {
            const IID id = {i + 1, 0, 0, {}};
            std::memcpy(bytes.data() + offsetof(APO_REG_PROPERTIES, iidAPOInterfaceList) + i * sizeof(IID),
                        &id, sizeof(id));
        }
    }

    [[nodiscard]] const APO_REG_PROPERTIES* get() const {
        return reinterpret_cast<const APO_REG_PROPERTIES*>(bytes.data());
    }

private:
    std::vector<std::byte> bytes;
};

class ApoRegistration : public testing::Test {
protected:
    void TearDown() override {
        static_cast<void>(UnregisterAPO(someClass));
        static_cast<void>(removeEmptyObjectList());
    }

    /// A key of somebody else's, with a value.
    static void put(const std::string& path, const std::string& name) {
        const platform::RegistryValue value = platform::numberValue(1);
        RegistryKey made;
        ASSERT_EQ(RegistryKey::root(classes).create(path, RegistryAccess::readWrite, made), 0);
        ASSERT_EQ(made.setValue(name, value.type, value.data), 0);
    }

    test::OwnRegistry own;
};

TEST_F(ApoRegistration, WritesWhatTheRecordSays) {
    const APO_REG_PROPERTIES record = someRecord();

    EXPECT_EQ(RegisterAPO(&record), published::ok);

    EXPECT_EQ(treeLines(classes, place), (Lines{
                                             " @APOInterface0 = '{5AC1067F-C44E-47ED-9472-79D1751CA083}'",
                                             " @Copyright = 'Copyright (c) the Korva team'",
                                             " @Flags = 13",
                                             " @FriendlyName = 'Some object'",
                                             " @MajorVersion = 2",
                                             " @MaxInputConnections = 5",
                                             " @MaxInstances = 8",
                                             " @MaxOutputConnections = 7",
                                             " @MinInputConnections = 4",
                                             " @MinOutputConnections = 6",
                                             " @MinorVersion = 3",
                                             " @NumAPOInterfaces = 1",
                                         }));
}

TEST_F(ApoRegistration, WritesAsManyInterfacesAsTheRecordSays) {
    const LongRecord none(0);
    EXPECT_EQ(RegisterAPO(none.get()), published::ok);
    EXPECT_EQ(valueAt(classes, place, "NumAPOInterfaces"), "0");
    EXPECT_EQ(valueAt(classes, place, "APOInterface0"), "none");

    const LongRecord many(11);
    EXPECT_EQ(RegisterAPO(many.get()), published::ok);
    EXPECT_EQ(valueAt(classes, place, "NumAPOInterfaces"), "11");
    EXPECT_EQ(valueAt(classes, place, "APOInterface0"), "'{00000001-0000-0000-0000-000000000000}'");
    EXPECT_EQ(valueAt(classes, place, "APOInterface10"), "'{0000000B-0000-0000-0000-000000000000}'");
    EXPECT_EQ(valueAt(classes, place, "APOInterface11"), "none");
}

TEST_F(ApoRegistration, RefusesNoRecord) {
    EXPECT_EQ(RegisterAPO(nullptr), published::nullPointer);
    EXPECT_FALSE(hasKey(classes, place));
}

TEST_F(ApoRegistration, TakesTextsOf512BytesWithTheirTerminator) {
    APO_REG_PROPERTIES record = someRecord();
    std::fill_n(record.szFriendlyName, 255, WCHAR{'n'});
    std::fill_n(record.szCopyrightInfo, 255, WCHAR{'c'});

    EXPECT_EQ(RegisterAPO(&record), published::ok);

    EXPECT_EQ(valueAt(classes, place, "FriendlyName"), "'" + std::string(255, 'n') + "'");
    EXPECT_EQ(valueAt(classes, place, "Copyright"), "'" + std::string(255, 'c') + "'");
}

TEST_F(ApoRegistration, WritesNothingForATextWithoutATerminator) {
    APO_REG_PROPERTIES name = someRecord();
    std::fill_n(name.szFriendlyName, 256, WCHAR{'n'});
    APO_REG_PROPERTIES copyright = someRecord();
    std::fill_n(copyright.szCopyrightInfo, 256, WCHAR{'c'});

    EXPECT_EQ(RegisterAPO(&name), published::invalidArgument);
    EXPECT_EQ(RegisterAPO(&copyright), published::invalidArgument);

    EXPECT_FALSE(hasKey(classes, place));
}

TEST_F(ApoRegistration, WritesEmptyTexts) {
    APO_REG_PROPERTIES record = someRecord();
    record.szFriendlyName[0] = 0;
    record.szCopyrightInfo[0] = 0;

    EXPECT_EQ(RegisterAPO(&record), published::ok);

    EXPECT_EQ(valueAt(classes, place, "FriendlyName"), "''");
    EXPECT_EQ(valueAt(classes, place, "Copyright"), "''");
}

TEST_F(ApoRegistration, MakesTheObjectsKeyAnew) {
    put(place, "old");
    put(place + "\\Below\\Deeper", "old");
    const APO_REG_PROPERTIES record = someRecord();

    EXPECT_EQ(RegisterAPO(&record), published::ok);
    EXPECT_EQ(RegisterAPO(&record), published::ok);

    EXPECT_EQ(treeLines(classes, place).size(), 12U);
    EXPECT_EQ(valueAt(classes, place, "old"), "none");
}

TEST_F(ApoRegistration, TakesOneObjectOffTheList) {
    const APO_REG_PROPERTIES record = someRecord();
    ASSERT_EQ(RegisterAPO(&record), published::ok);
    put(place + "\\Below\\Deeper", "old");
    put(list + "\\{other}", "v");

    EXPECT_EQ(UnregisterAPO(someClass), published::ok);

    EXPECT_FALSE(hasKey(classes, place));
    EXPECT_TRUE(hasKey(classes, list + "\\{other}"));
    EXPECT_EQ(RegistryKey::root(classes).deleteTree(list + "\\{other}"), 0);
}

TEST_F(ApoRegistration, CantTakeOffWhatIsNotOnTheList) {
    constexpr HRESULT missing = platform::hresultOf(platform::registry_result::notFound);
    EXPECT_EQ(UnregisterAPO(someClass), missing);

    const APO_REG_PROPERTIES record = someRecord();
    ASSERT_EQ(RegisterAPO(&record), published::ok);
    EXPECT_EQ(UnregisterAPO(someClass), published::ok);
    EXPECT_EQ(UnregisterAPO(someClass), missing);
}

TEST_F(ApoRegistration, LeavesNoEmptyList) {
    EXPECT_EQ(removeEmptyObjectList(), published::ok);
    const APO_REG_PROPERTIES record = someRecord();
    ASSERT_EQ(RegisterAPO(&record), published::ok);
    EXPECT_EQ(removeEmptyObjectList(), published::ok);
    EXPECT_TRUE(hasKey(classes, place));

    ASSERT_EQ(UnregisterAPO(someClass), published::ok);
    EXPECT_EQ(removeEmptyObjectList(), published::ok);
    EXPECT_FALSE(hasKey(classes, "AudioEngine"));
}

TEST_F(ApoRegistration, LeavesAListWithAValueOfOthers) {
    put(list, "v");
    EXPECT_EQ(removeEmptyObjectList(), published::ok);
    EXPECT_EQ(valueAt(classes, list, "v"), "1");

    put("AudioEngine", "v");
    ASSERT_EQ(RegistryKey::root(classes).deleteTree(list), 0);
    EXPECT_EQ(removeEmptyObjectList(), published::ok);
    EXPECT_EQ(valueAt(classes, "AudioEngine", "v"), "1");
    EXPECT_EQ(RegistryKey::root(classes).deleteTree("AudioEngine"), 0);
}

TEST_F(ApoRegistration, GivesTheRegistrysErrors) {
    constexpr HRESULT refused = platform::hresultOf(platform::registry_result::isLink);
    put(list, "SymbolicLinkValue");
    const APO_REG_PROPERTIES record = someRecord();

    EXPECT_EQ(RegisterAPO(&record), refused);
    EXPECT_EQ(UnregisterAPO(someClass), refused);
    EXPECT_EQ(removeEmptyObjectList(), refused);

    EXPECT_EQ(RegistryKey::root(classes).deleteTree(list), 0);
}

}  // namespace
}  // namespace korva::apo
