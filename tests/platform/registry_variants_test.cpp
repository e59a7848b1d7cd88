#include "platform/registry_values.h"

#include <gtest/gtest.h>

#include <cstring>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "platform/property_value.h"
#include "platform/published/results.h"
#include "platform/unicode.h"

namespace korva::platform {
namespace {

using namespace std::string_view_literals;
using Strings = std::vector<std::string>;

RegistryValue stored(std::uint32_t type, std::string_view data) {
    const std::span bytes = std::as_bytes(std::span(data));
    return {type, std::vector<std::byte>(bytes.begin(), bytes.end())};
}

HRESULT read(PropertyValue& value, std::uint32_t type, std::string_view data) {
    return variantOf(stored(type, data), *value.out());
}

Strings stringsOf(const PropertyValue& value) {
    Strings strings;
    for (ULONG i = 0; i < value->calpwstr.cElems; ++i) {
        strings.push_back(toUtf8(value->calpwstr.pElems[i]));
    }
    return strings;
}

TEST(RegistryValues, EachKindHasItsType) {
    EXPECT_EQ(registryTypeOf(VT_I4), 4U);
    EXPECT_EQ(registryTypeOf(VT_UI4), 4U);
    EXPECT_EQ(registryTypeOf(VT_I8), 11U);
    EXPECT_EQ(registryTypeOf(VT_UI8), 11U);
    EXPECT_EQ(registryTypeOf(VT_LPWSTR), 1U);
    EXPECT_EQ(registryTypeOf(VT_BLOB), 3U);
    EXPECT_EQ(registryTypeOf(4127), 7U);
    EXPECT_EQ(registryTypeOf(VT_EMPTY), std::nullopt);
    EXPECT_EQ(registryTypeOf(VT_R4), std::nullopt);
}

TEST(RegistryValues, ATextIsTerminatedHoweverItIsStored) {
    for (const std::string_view data : {"a\0\344\0\0\0"sv, "a\0\344\0"sv, "a\0\344\0x"sv}) {
        PropertyValue value;
        ASSERT_EQ(read(value, registry_type::string, data), published::ok);
        ASSERT_EQ(value->vt, VT_LPWSTR);
        EXPECT_EQ(toUtf8(value->pwszVal), "a\303\244");
    }
}

TEST(RegistryValues, ATextOfNoLengthIsEmpty) {
    for (const std::string_view data : {""sv, "x"sv, "\0\0"sv}) {
        PropertyValue value;
        ASSERT_EQ(read(value, registry_type::string, data), published::ok);
        EXPECT_EQ(toUtf8(value->pwszVal), "");
    }
}

TEST(RegistryValues, BytesBecomeABlob) {
    PropertyValue value;
    ASSERT_EQ(read(value, registry_type::binary, "\1\0\2"sv), published::ok);
    ASSERT_EQ(value->vt, VT_BLOB);
    ASSERT_EQ(value->blob.cbSize, 3U);
    EXPECT_EQ(std::memcmp(value->blob.pBlobData, "\1\0\2", 3), 0);
}

TEST(RegistryValues, NoBytesAreABlobWithoutAPointer) {
    PropertyValue value;
    ASSERT_EQ(read(value, registry_type::binary, ""sv), published::ok);
    EXPECT_EQ(value->vt, VT_BLOB);
    EXPECT_EQ(value->blob.cbSize, 0U);
    EXPECT_EQ(value->blob.pBlobData, nullptr);
}

TEST(RegistryValues, ANumberIsUnsigned) {
    PropertyValue value;
    ASSERT_EQ(read(value, registry_type::dword, "\377\377\377\377"sv), published::ok);
    EXPECT_EQ(value->vt, VT_UI4);
    EXPECT_EQ(value->ulVal, 0xFFFFFFFFU);
}

TEST(RegistryValues, ANumberOfAnotherLengthIsRefused) {
    PropertyValue value;
    EXPECT_EQ(read(value, registry_type::dword, "\1\2\3\4\5"sv), static_cast<HRESULT>(0x800700EAU));
    EXPECT_EQ(read(value, registry_type::dword, "\1\2\3"sv), static_cast<HRESULT>(0x8007000DU));
    EXPECT_EQ(read(value, registry_type::dword, ""sv), static_cast<HRESULT>(0x8007000DU));
    EXPECT_EQ(value->vt, VT_EMPTY);
}

TEST(RegistryValues, AListHasAsManyStringsAsZeros) {
    PropertyValue value;
    ASSERT_EQ(read(value, registry_type::multiString, "a\0\0\0b\0\0\0\0\0"sv), published::ok);
    EXPECT_EQ(value->vt, 4127);
    EXPECT_EQ(stringsOf(value), (Strings{"a", "b", ""}));

    ASSERT_EQ(read(value, registry_type::multiString, "a\0\0\0b\0"sv), published::ok);
    EXPECT_EQ(stringsOf(value), (Strings{"a", "b"}));

    ASSERT_EQ(read(value, registry_type::multiString, "\0\0"sv), published::ok);
    EXPECT_EQ(stringsOf(value), (Strings{""}));
}

TEST(RegistryValues, AListOfNoLengthHasNoString) {
    PropertyValue value;
    ASSERT_EQ(read(value, registry_type::multiString, ""sv), published::ok);
    EXPECT_EQ(value->vt, 4127);
    EXPECT_EQ(value->calpwstr.cElems, 0U);
}

TEST(RegistryValues, AListOfAnOddLengthIsInvalidAndGivesNothing) {
    PropertyValue value;
    EXPECT_EQ(read(value, registry_type::multiString, "a\0\0\0\0"sv), static_cast<HRESULT>(0x8007000DU));
    EXPECT_EQ(value->vt, VT_EMPTY);
}

TEST(RegistryValues, OtherTypesAreNotRead) {
    PropertyValue value;
    for (const std::uint32_t type :
         {registry_type::none, registry_type::expandString, 5U, 6U, registry_type::qword, 0xFFFF0000U}) {
        EXPECT_EQ(read(value, type, "\1\0\0\0\0\0\0\0"sv), published::notImplemented) << type;
        EXPECT_EQ(value->vt, VT_EMPTY);
    }
}

/// Gives memory so many times, and then none.
class ScarceMemory {
public:
    explicit ScarceMemory(int count) { left = count; }
    static void* allocate(std::size_t size) { return left-- > 0 ? CoTaskMemAlloc(size) : nullptr; }

private:
    static int left;
};
int ScarceMemory::left = 0;

TEST(RegistryValues, WithoutMemoryThereIsNoValueAndNothingIsKept) {
    struct Case {
        std::uint32_t type;
        std::string_view data;
        int allocations;
    };
    for (const Case& c :
         {Case{registry_type::string, "a\0\0\0"sv, 1}, Case{registry_type::binary, "abc"sv, 1},
          Case{registry_type::multiString, "a\0\0\0b\0\0\0\0\0"sv, 4}}) {
        for (int allowed = 0; allowed < c.allocations; ++allowed) {
            PropertyValue value;
            const ScarceMemory memory(allowed);
            EXPECT_EQ(variantOf(stored(c.type, c.data), *value.out(), &ScarceMemory::allocate),
                      published::outOfMemory);
            EXPECT_EQ(value->vt, VT_EMPTY);
        }
        PropertyValue value;
        const ScarceMemory memory(c.allocations);
        EXPECT_EQ(variantOf(stored(c.type, c.data), *value.out(), &ScarceMemory::allocate), published::ok);
    }
}

TEST(RegistryValues, AResultOfTheRegistryBecomesOneOfAMethod) {
    EXPECT_EQ(hresultOf(0), 0);
    EXPECT_EQ(hresultOf(2), static_cast<HRESULT>(0x80070002U));
    EXPECT_EQ(hresultOf(259), static_cast<HRESULT>(0x80070103U));
    EXPECT_EQ(hresultOf(681), static_cast<HRESULT>(0x800702A9U));
    EXPECT_EQ(hresultOf(0x12345), static_cast<HRESULT>(0x80072345U));
    EXPECT_EQ(hresultOf(static_cast<std::int32_t>(0x80004005U)), static_cast<HRESULT>(0x80004005U));
    EXPECT_EQ(hresultOf(-1), -1);
}

}  // namespace
}  // namespace korva::platform
