#include "params/value_bytes.h"

#include <gtest/gtest.h>

#include <array>
#include <initializer_list>
#include <string>
#include <vector>

#include "platform/published/results.h"
#include "platform/registry_values.h"
#include "tests/support/variants.h"

namespace korva::params {
namespace {

using namespace std::string_literals;
using platform::toWide;

std::string contents(const ValueBytes& value) {
    const std::span bytes = value.bytes.bytes();
    return std::string(reinterpret_cast<const char*>(bytes.data()), bytes.size());
}

/// What is taken of a value that must be taken.
ValueBytes taken(REFPROPVARIANT value) {
    ValueBytes bytes;
    EXPECT_EQ(takeBytes(value, bytes), published::ok);
    EXPECT_EQ(bytes.kind, value.vt);
    return bytes;
}

TEST(ValueBytes, ANumberIsItsBytesLowestFirst) {
    EXPECT_EQ(contents(taken(test::unsignedVariant(0x04030201))), "\1\2\3\4"s);
    EXPECT_EQ(contents(taken(test::signedVariant(-2))), "\xFE\xFF\xFF\xFF"s);
    EXPECT_EQ(contents(taken(test::wideVariant(0x0807060504030201))), "\1\2\3\4\5\6\7\10"s);
    PROPVARIANT negative = test::variantOfKind(VT_I8);
    negative.hVal.QuadPart = -1;
    EXPECT_EQ(contents(taken(negative)), std::string(8, '\xFF'));
}

TEST(ValueBytes, ATextHasItsTerminator) {
    platform::WideString text = toWide("MF");
    EXPECT_EQ(contents(taken(test::textVariant(text))), "M\0F\0\0\0"s);
    platform::WideString empty;
    EXPECT_EQ(contents(taken(test::textVariant(empty))), "\0\0"s);
}

TEST(ValueBytes, ANullTextCountsAsEmpty) {
    EXPECT_EQ(contents(taken(test::variantOfKind(VT_LPWSTR))), "\0\0"s);
}

TEST(ValueBytes, ABlobIsItsBytes) {
    std::array<BYTE, 3> bytes = {1, 0, 3};
    EXPECT_EQ(contents(taken(test::blobVariant(bytes))), "\1\0\3"s);
    EXPECT_EQ(contents(taken(test::blobVariant({}))), "");
}

TEST(ValueBytes, AListsStringsFollowOneAnotherWithNoneToCloseIt) {
    platform::WideString first = toWide("a");
    platform::WideString second = toWide("");
    platform::WideString third = toWide("b");
    std::array<LPWSTR, 4> strings = {first.data(), second.data(), nullptr, third.data()};
    EXPECT_EQ(contents(taken(test::listVariant(strings))), "a\0\0\0\0\0\0\0b\0\0\0"s);
    EXPECT_EQ(contents(taken(test::listVariant({}))), "");
}

TEST(ValueBytes, NoValueHasNoBytes) {
    EXPECT_TRUE(taken(test::variantOfKind(VT_EMPTY)).bytes.empty());
}

TEST(ValueBytes, OtherKindsAreRefusedAndChangeNothing) {
    ValueBytes bytes = taken(test::unsignedVariant(5));
    for (const int kind :
         std::initializer_list<int>{VT_I2, VT_R4, VT_BOOL, VT_UNKNOWN, VT_I1, VT_UI1, VT_UI2, VT_LPSTR,
                                    VT_CLSID, VT_VECTOR | VT_UI4, VT_VECTOR | VT_LPSTR}) {
        EXPECT_EQ(takeBytes(test::variantOfKind(static_cast<VARTYPE>(kind)), bytes),
                  published::notImplemented)
            << kind;
    }
    EXPECT_EQ(bytes.kind, VT_UI4);
    EXPECT_EQ(contents(bytes), "\5\0\0\0"s);
}

TEST(ValueBytes, ALengthWithoutContentsIsRefused) {
    ValueBytes bytes;
    PROPVARIANT blob = test::variantOfKind(VT_BLOB);
    blob.blob.cbSize = 1;
    EXPECT_EQ(takeBytes(blob, bytes), published::invalidArgument);
    PROPVARIANT list = test::variantOfKind(platform::textList);
    list.calpwstr.cElems = 1;
    EXPECT_EQ(takeBytes(list, bytes), published::invalidArgument);
    EXPECT_EQ(bytes.kind, VT_EMPTY);
}

}  // namespace
}  // namespace korva::params
