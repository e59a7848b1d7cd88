#include "params/catalogue_rows.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string_view>
#include <vector>

namespace korva::params {
namespace {

using Error = const char*;

CatalogueRow rowOf(std::string_view text) {
    return CatalogueReader(text).row();
}

std::vector<ParamField> fieldsOf(std::string_view text) {
    std::vector<ParamField> fields;
    forEachField(text, [&](const ParamField& field) { fields.push_back(field); });
    return fields;
}

constexpr char twoRows[] = "-2..-1: b w=512 (priority 9); 0: f*2";
constexpr char oneMore[] = "1: z7 (category 3)";

TEST(CatalogueRows, ARowIsANumberAndItsFields) {
    const CatalogueRow row = rowOf("-5: b f*2");
    EXPECT_EQ(row.firstId, -5);
    EXPECT_EQ(row.lastId, -5);
    EXPECT_EQ(row.idCount(), 1U);
    EXPECT_EQ(row.fields, "b f*2");
    EXPECT_EQ(row.category, 0U);
    EXPECT_EQ(row.sourcePolicy, 0U);
    EXPECT_EQ(row.applyPriority, 0U);
}

TEST(CatalogueRows, ARangeHasBothItsEnds) {
    EXPECT_EQ(rowOf("-12..-7: z0").idCount(), 6U);
    EXPECT_EQ(rowOf("-1..1: b").idCount(), 3U);
}

TEST(CatalogueRows, AttributesStandInAnyNumberAndOrder) {
    const CatalogueRow row = rowOf("1: u (priority 50, category 3, policy 2)");
    EXPECT_EQ(row.category, 3U);
    EXPECT_EQ(row.sourcePolicy, 2U);
    EXPECT_EQ(row.applyPriority, 50U);
}

TEST(CatalogueRows, AFieldIsRepeatedWithItsDefault) {
    const std::vector<ParamField> fields = fieldsOf("h=3*2 c");
    ASSERT_EQ(fields.size(), 3U);
    EXPECT_EQ(fields[0].type, ParamFieldType::Word16A);
    EXPECT_EQ(fields[1].defaultValue, 3U);
    EXPECT_EQ(fields[2].type, ParamFieldType::Byte8);
    EXPECT_EQ(fields[2].defaultValue, 0U);
}

TEST(CatalogueRows, ADefaultOfAFloatIsAFloat) {
    EXPECT_EQ(fieldsOf("f=1").front().defaultValue, 0x3F800000U);
    EXPECT_EQ(fieldsOf("u=1").front().defaultValue, 1U);
}

TEST(CatalogueRows, RowsOfAllTextsFollowOneAnother) {
    const auto& descriptors = catalogueDescriptors<twoRows, oneMore>;
    ASSERT_EQ(descriptors.size(), 4U);
    for (std::int32_t i = 0; i < 4; ++i) {
        EXPECT_EQ(descriptors[static_cast<std::size_t>(i)].ordinal, i);
        EXPECT_EQ(descriptors[static_cast<std::size_t>(i)].paramId, i - 2);
    }
    EXPECT_EQ(descriptors[1].applyPriority, 9U);
    EXPECT_EQ(descriptors[1].field(1)->defaultValue, 512U);
    EXPECT_EQ(descriptors[2].fieldCount, 2U);
    EXPECT_EQ(descriptors[2].applyPriority, 0U);
    EXPECT_EQ(descriptors[3].field(0)->length, 7U);
    EXPECT_EQ(descriptors[3].category, 3U);
}

// While a constant is computed, what is raised here ends the build.
TEST(CatalogueRows, WhatIsNoRowIsRefused) {
    for (const std::string_view text :
         {"", "b", "1 b", "1..: b", "..2: b", "2..1: b", "- 1: b", "1: b (rank 2)", "1: b (policy)",
          "1: b (policy 1", "1: b (policy 1, )", "1: b (policy 1) f", "1: b (policy 1) (policy 2)"}) {
        EXPECT_THROW(static_cast<void>(rowOf(text)), Error) << text;
    }
}

TEST(CatalogueRows, WhatIsNoFieldIsRefused) {
    for (const std::string_view text : {"x", "B", "z", "b=", "b*", "b=x", "f*f", "2", "z0=1"}) {
        EXPECT_THROW(static_cast<void>(fieldsOf(text)), Error) << text;
    }
}

}  // namespace
}  // namespace korva::params
