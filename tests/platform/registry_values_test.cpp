#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "platform/registry.h"
#include "tests/platform/registry_test.h"

namespace korva::platform {
namespace {

using namespace registry_result;
using RegistryValuesTest = RegistryTest;

/// Every type that has a name, and numbers that are none's.
constexpr std::array<std::uint32_t, 13> types = {0, 1,  2,  3,      4,          5,         7,
                                                 8, 11, 12, 0x1000, 0x80000000, 0xFFFF0000};

TEST_F(RegistryValuesTest, BytesOfAnyTypeAndLengthAreKept) {
    for (const std::uint32_t type : types) {
        for (const std::size_t size : {0u, 1u, 2u, 3u, 4u, 5u, 7u, 8u, 9u, 127u, 128u, 129u, 1001u}) {
            const Bytes data = someBytes(size, static_cast<int>(type & 0xFF));
            ASSERT_EQ(key.setValue("v", type, data), success) << type << " " << size;
            RegistryValue value{.type = 99, .data = bytes({1, 2})};
            ASSERT_EQ(key.readValue("v", value), success);
            EXPECT_EQ(value.type, type) << size;
            EXPECT_EQ(value.data, data) << type << " " << size;
        }
    }
}

TEST_F(RegistryValuesTest, StringsAreNotEndedWhereTheyAreNot) {
    // Whatever follows the data in memory, and whatever it ends with.
    const Bytes text = bytes({'a', 0, 'b', 0, 0, 0, 0, 0, 'c', 0, 0, 0, 0, 0, 0, 0});
    for (const std::uint32_t type :
         {registry_type::string, registry_type::expandString, registry_type::multiString}) {
        for (std::size_t size = 0; size <= text.size(); ++size) {
            const auto data = std::span(text).first(size);
            ASSERT_EQ(key.setValue("v", type, data), success);
            EXPECT_EQ(dataOf(key, "v"), Bytes(data.begin(), data.end())) << type << " " << size;
        }
    }
}

TEST_F(RegistryValuesTest, StringsOfEightBitsKeepTheirBytes) {
    const Bytes text = bytes({'M', 'F', 'X', 0});
    ASSERT_EQ(key.setValue("v", registry_type::string, text), success);
    EXPECT_EQ(dataOf(key, "v"), text);
    ASSERT_EQ(key.setValue("v", registry_type::string, std::span(text).first(3)), success);
    EXPECT_EQ(dataOf(key, "v"), bytes({'M', 'F', 'X'}));
}

TEST_F(RegistryValuesTest, LargeValuesAreKept) {
    for (const std::size_t size : {65535u, 65536u, 65537u, 1u << 20}) {
        ASSERT_EQ(key.setValue("v", registry_type::binary, someBytes(size)), success);
        EXPECT_EQ(dataOf(key, "v"), someBytes(size)) << size;
    }
}

TEST_F(RegistryValuesTest, ReadOfAMissingValueLeavesWhatItWasGiven) {
    RegistryValue value{.type = 99, .data = bytes({1, 2})};
    EXPECT_EQ(key.readValue("missing", value), notFound);
    EXPECT_EQ(key.readValue("", value), notFound);
    EXPECT_EQ(value.type, 99u);
    EXPECT_EQ(value.data, bytes({1, 2}));
}

TEST_F(RegistryValuesTest, SetReplacesTypeAndData) {
    ASSERT_EQ(key.setValue("v", registry_type::binary, someBytes(500)), success);
    ASSERT_EQ(key.setValue("v", registry_type::qword, someBytes(8, 2)), success);
    RegistryValue value;
    ASSERT_EQ(key.readValue("v", value), success);
    EXPECT_EQ(value.type, registry_type::qword);
    EXPECT_EQ(value.data, someBytes(8, 2));
    EXPECT_EQ(valueNames(key), std::vector<std::string>{"v"});
}

TEST_F(RegistryValuesTest, NamesAreComparedWithoutRegardToCaseAndKeptAsFirstWritten) {
    const std::vector<std::pair<std::string, std::string>> alike = {
        {"Name", "nAME"},
        {"{6DCC1AC8-4A3C-4A98-A3A7-F967127D5763},7", "{6dcc1ac8-4a3c-4a98-a3a7-f967127d5763},7"},
        {"\u00C4", "\u00E4"},
        {"\u03A3", "\u03C3"},
        {"\u0436", "\u0416"},
    };
    for (const auto& [first, second] : alike) {
        ASSERT_EQ(key.setValue(first, registry_type::binary, someBytes(1)), success);
        ASSERT_EQ(key.setValue(second, registry_type::binary, someBytes(2)), success);
        EXPECT_EQ(dataOf(key, first), someBytes(2)) << first;
        EXPECT_EQ(dataOf(key, second), someBytes(2));
        EXPECT_EQ(valueNames(key), std::vector<std::string>{first});
        EXPECT_EQ(key.deleteValue(second), success);
        EXPECT_TRUE(valueNames(key).empty());
    }
}

TEST_F(RegistryValuesTest, AValueThatIsMadeAgainIsWrittenAsItIsThen) {
    setNumber(key, "Name", 1);
    ASSERT_EQ(key.deleteValue("Name"), success);
    setNumber(key, "NAME", 1);
    EXPECT_EQ(valueNames(key), std::vector<std::string>{"NAME"});
}

TEST_F(RegistryValuesTest, TheEmptyNameIsTheKeysDefaultValue) {
    setNumber(key, "", 1);
    setNumber(key, "named", 2);
    EXPECT_EQ(dataOf(key, ""), bytes({1, 0, 0, 0}));
    auto names = valueNames(key);
    std::sort(names.begin(), names.end());
    EXPECT_EQ(names, (std::vector<std::string>{"", "named"}));

    EXPECT_EQ(key.deleteValue(""), success);
    EXPECT_EQ(valueNames(key), std::vector<std::string>{"named"});
}

TEST_F(RegistryValuesTest, NamesMayHoldWhatPartsPathsAndMore) {
    const std::vector<std::string> names = {"a\\b", "\\", "a/b", " ", "a,b", "\U0001F3B5", "\n"};
    for (std::size_t i = 0; i < names.size(); ++i) {
        setNumber(key, names[i], static_cast<std::uint32_t>(i));
    }
    for (std::size_t i = 0; i < names.size(); ++i) {
        EXPECT_EQ(dataOf(key, names[i]), bytes({static_cast<int>(i), 0, 0, 0})) << names[i];
    }
    EXPECT_EQ(valueNames(key).size(), names.size());
    EXPECT_TRUE(keyNames(key).empty());
}

TEST_F(RegistryValuesTest, EachKeyHasItsOwn) {
    setNumber(key, "v", 1);
    setNumber(made("sub"), "v", 2);
    setNumber(made("sub\\sub"), "v", 3);
    EXPECT_EQ(dataOf(key, "v"), bytes({1, 0, 0, 0}));
    EXPECT_EQ(dataOf(made("SUB"), "v"), bytes({2, 0, 0, 0}));
    EXPECT_EQ(made("sub").deleteValue("v"), success);
    EXPECT_EQ(dataOf(key, "v"), bytes({1, 0, 0, 0}));
    EXPECT_EQ(dataOf(made("sub\\sub"), "v"), bytes({3, 0, 0, 0}));
}

TEST_F(RegistryValuesTest, AreSeenAtOnceByEveryOpenKey) {
    RegistryKey reading;
    ASSERT_EQ(machine.open(own.key(), RegistryAccess::read, reading), success);
    for (std::uint32_t i = 0; i < 50; ++i) {
        setNumber(key, "v", i);
        EXPECT_EQ(dataOf(reading, "v"), bytes({static_cast<int>(i), 0, 0, 0}));
    }
}

TEST_F(RegistryValuesTest, DeleteOfAMissingOneSaysSo) {
    setNumber(key, "v", 1);
    EXPECT_EQ(key.deleteValue("missing"), notFound);
    EXPECT_EQ(key.deleteValue(""), notFound);
    EXPECT_EQ(key.deleteValue("v"), success);
    EXPECT_EQ(key.deleteValue("v"), notFound);
}

TEST_F(RegistryValuesTest, ValueNameGivesEveryNameOnce) {
    std::vector<std::string> expected;
    for (int i = 1000; i < 1300; ++i) {
        expected.push_back("value " + std::to_string(i));
        setNumber(key, expected.back(), 0);
    }
    auto found = valueNames(key);
    std::sort(found.begin(), found.end());
    EXPECT_EQ(found, expected);
}

TEST_F(RegistryValuesTest, ValueNameEndsPastTheLastOne) {
    std::string name = "as it was";
    EXPECT_EQ(key.valueName(0, 100, name), noMoreItems);
    setNumber(key, "only", 0);
    EXPECT_EQ(key.valueName(1, 100, name), noMoreItems);
    EXPECT_EQ(key.valueName(0xFFFFFFFF, 100, name), noMoreItems);
    EXPECT_EQ(key.valueName(1, 0, name), noMoreItems);
    EXPECT_EQ(name, "as it was");
}

TEST_F(RegistryValuesTest, ValueNameNeedsRoomForTheNameInBytesAndATerminator) {
    // Three bytes, four, and none.
    for (const std::string expected : {"abc", "\u00E4\u00E4", ""}) {
        setNumber(key, expected, 0);
        std::string name = "as it was";
        for (std::size_t capacity = 0; capacity <= expected.size(); ++capacity) {
            EXPECT_EQ(key.valueName(0, capacity, name), moreData) << capacity;
        }
        EXPECT_EQ(name, "as it was");
        EXPECT_EQ(key.valueName(0, expected.size() + 1, name), success);
        EXPECT_EQ(name, expected);
        EXPECT_EQ(key.deleteValue(expected), success);
    }
}

TEST_F(RegistryValuesTest, NamesTakeUpTo16383UnitsOfUtf16) {
    for (const std::size_t length : {126u, 127u, 128u, 129u, 255u, 256u, 511u, 512u, 8192u, 16382u, 16383u}) {
        const std::string longName(length, 'n');
        setNumber(key, longName, 1);
        EXPECT_EQ(valueNames(key), std::vector<std::string>{longName}) << length;
        EXPECT_EQ(dataOf(key, longName), bytes({1, 0, 0, 0}));
        EXPECT_EQ(key.deleteValue(longName), success);
    }
    const std::string tooLong(16384, 'n');
    RegistryValue value;
    EXPECT_EQ(key.setValue(tooLong, registry_type::binary, {}), invalidParameter);
    EXPECT_EQ(key.readValue(tooLong, value), invalidParameter);
    EXPECT_EQ(key.deleteValue(tooLong), invalidParameter);
}

TEST_F(RegistryValuesTest, NamesThatAreNoTextAreRefused) {
    using namespace std::string_literals;
    for (const std::string& name : {"\xFF"s, "a\xC3"s, "\xED\xA0\x80"s, "\xC0\x80"s, "a\0b"s, "\0"s}) {
        RegistryValue value;
        EXPECT_EQ(key.setValue(name, registry_type::binary, {}), invalidParameter);
        EXPECT_EQ(key.readValue(name, value), invalidParameter);
        EXPECT_EQ(key.deleteValue(name), invalidParameter);
    }
    EXPECT_TRUE(valueNames(key).empty());
}

}  // namespace
}  // namespace korva::platform
