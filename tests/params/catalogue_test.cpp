#include "params/catalogue.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <map>
#include <optional>
#include <vector>

#include "params/guid_hash.h"
#include "platform/property_key.h"
#include "tests/support/byte_list.h"
#include "tests/support/engines.h"

namespace korva::params {
namespace {

using test::bytes;

/// The descriptor of a number; a test that names a missing one fails.
const ParamDescriptor& descriptorOf(const ParamDescriptorList& list, std::int32_t paramId) {
    for (std::uint32_t i = 0; i < list.Count(); ++i) {
        if (list.At(i).paramId == paramId) {
            return list.At(i);
        }
    }
    ADD_FAILURE() << "no parameter " << paramId;
    return list.At(0);
}

std::vector<ParamDescriptorList> allLists() {
    std::vector<ParamDescriptorList> lists{BaseList()};
    for (const ParamLayout& layout : allLayouts()) {
        for (std::uint32_t i = 0; i < layout.ModuleCount(); ++i) {
            lists.push_back(layout.Module(i).descriptors);
        }
    }
    return lists;
}

std::vector<std::byte> payload(const ParamDescriptorList& list, std::int32_t paramId) {
    return defaultPayload(descriptorOf(list, paramId));
}

TEST(Catalogue, LayoutsAreFoundByTheirEngines) {
    ASSERT_NE(FindLayout(test::firstEngine), nullptr);
    EXPECT_EQ(FindLayout(test::firstEngine)->ModuleCount(), 6U);
    ASSERT_NE(FindLayout(test::secondEngine), nullptr);
    EXPECT_EQ(FindLayout(test::secondEngine)->ModuleCount(), 2U);
    ASSERT_NE(FindLayout(test::thirdEngine), nullptr);
    EXPECT_EQ(FindLayout(test::thirdEngine)->ModuleCount(), 1U);
}

TEST(Catalogue, AnUnknownEngineAndTheZeroOneHaveNoLayout) {
    EXPECT_EQ(FindLayout(test::unknownEngine), nullptr);
    EXPECT_EQ(FindLayout(GUID{}), nullptr);
}

TEST(Catalogue, ModulesStandInOrderWithTheirIdentifiersAndCounts) {
    struct Expected {
        const char* moduleId;
        std::uint32_t count;
    };
    constexpr std::array expected = {Expected{"{2a485b70-f8c7-5154-b081-1489440e2999}", 26},
                                     Expected{"{be2a4485-b24b-6a5a-ab72-9a2d14ac9333}", 51},
                                     Expected{"{f9ddb343-13be-a650-ae96-8f3751d3a8cc}", 23},
                                     Expected{"{2a529a68-f7a6-bf53-b806-e934b3a98ec2}", 63},
                                     Expected{"{f77e0018-6f75-ff52-abc2-7d91570f10fc}", 36},
                                     Expected{"{2c9f92a8-6185-b35d-a15c-89e524f11ffe}", 162},
                                     Expected{"{ca865f50-f837-5154-b081-0ccfc54bb0f6}", 10},
                                     Expected{"{fbdb2ebb-f767-1454-9357-b465a5506321}", 27},
                                     Expected{"{4224daca-41ce-7554-853f-66c3e9276dd0}", 18}};
    std::size_t next = 0;
    for (const ParamLayout& layout : allLayouts()) {
        for (std::uint32_t i = 0; i < layout.ModuleCount(); ++i, ++next) {
            const ParamModuleRecord& module = layout.Module(i);
            EXPECT_EQ(module.moduleIndex, i);
            EXPECT_EQ(platform::guidText(module.moduleId), expected[next].moduleId);
            EXPECT_EQ(module.descriptors.Count(), expected[next].count) << expected[next].moduleId;
        }
    }
    EXPECT_EQ(next, expected.size());
}

TEST(Catalogue, There456DescriptorsInUse) {
    std::uint32_t count = 0;
    for (const ParamDescriptorList& list : allLists()) {
        count += list.Count();
    }
    EXPECT_EQ(count, 456U);
    EXPECT_EQ(BaseList().Count(), 40U);
}

TEST(Catalogue, NumbersAscendOneByOneFromTheListsFirst) {
    const std::vector<ParamDescriptorList> lists = allLists();
    for (const ParamDescriptorList& list : lists) {
        const std::int32_t first = &list.At(0) == &BaseList().At(0) ? -40 : -9;
        for (std::uint32_t i = 0; i < list.Count(); ++i) {
            EXPECT_EQ(list.At(i).ordinal, static_cast<std::int32_t>(i));
            EXPECT_EQ(list.At(i).paramId, first + static_cast<std::int32_t>(i));
        }
    }
}

TEST(Catalogue, EveryModuleBeginsWithTheSameTenRows) {
    const ParamDescriptorList& head = FindLayout(test::secondEngine)->Module(0).descriptors;
    const std::vector<ParamDescriptorList> lists = allLists();
    for (std::size_t at = 1; at < lists.size(); ++at) {
        for (std::uint32_t i = 0; i < 10; ++i) {
            EXPECT_EQ(defaultPayload(lists[at].At(i)), defaultPayload(head.At(i)));
            EXPECT_EQ(lists[at].At(i).sourcePolicy, head.At(i).sourcePolicy);
            EXPECT_EQ(lists[at].At(i).applyPriority, head.At(i).applyPriority);
        }
    }
}

/// The 64-bit FNV-1a hash of all numbers of a list, each in 8 bytes with the lowest first.
std::uint64_t digestOf(const ParamDescriptorList& list) {
    std::uint64_t hash = 0xCBF29CE484222325U;
    const auto add = [&](std::uint64_t number) {
        for (int shift = 0; shift < 64; shift += 8) {
            hash = (hash ^ (number >> shift & 0xFF)) * 0x100000001B3U;
        }
    };
    const auto addSigned = [&](std::int64_t number) { add(static_cast<std::uint64_t>(number)); };
    for (std::uint32_t i = 0; i < list.Count(); ++i) {
        const ParamDescriptor& descriptor = list.At(i);
        addSigned(descriptor.ordinal);
        addSigned(descriptor.paramId);
        add(descriptor.category);
        add(descriptor.sourcePolicy);
        add(descriptor.applyPriority);
        add(descriptor.fieldCount);
        for (std::uint32_t f = 0; f < descriptor.fieldCount; ++f) {
            const ParamField& field = *descriptor.field(f);
            add(static_cast<std::uint64_t>(field.type));
            add(field.length);
            add(field.isBytes);
            add(field.defaultValue);
        }
    }
    return hash;
}

// Two rows that change places, or a letter that becomes another of its width, show nowhere else. The digests
// were computed by another program, from the table that the modules' parameters are agreed in.
TEST(Catalogue, EveryNumberOfEachListIsTheAgreedOne) {
    constexpr std::array<std::uint64_t, 10> agreed = {
        0x6B67F812E2D17F76U, 0xCB82AE93B93465A8U, 0x5242CAA898CEC120U, 0x1E0068A0AA30A2CFU,
        0x889B882889346821U, 0x7544E6145A4E200AU, 0x05EA4D633193EEB0U, 0xBD483B8D8B51D6F8U,
        0x0D353CB70E5E8A2AU, 0x01BBA10F415CEADEU};
    const std::vector<ParamDescriptorList> lists = allLists();
    ASSERT_EQ(lists.size(), agreed.size());
    for (std::size_t i = 0; i < lists.size(); ++i) {
        EXPECT_EQ(digestOf(lists[i]), agreed[i]) << "list " << i << ", of which 0 is the base list";
    }
}

TEST(Catalogue, TheBytesOfEachLayoutAreThoseOfItsEngine) {
    std::map<std::uint32_t, std::uint32_t> bytesOfModuleCount;
    for (const ParamLayout& layout : allLayouts()) {
        std::uint32_t total = 0;
        for (std::uint32_t i = 0; i < BaseList().Count(); ++i) {
            total += payloadSize(BaseList().At(i));
        }
        for (std::uint32_t m = 0; m < layout.ModuleCount(); ++m) {
            for (std::uint32_t i = 0; i < layout.Module(m).descriptors.Count(); ++i) {
                total += payloadSize(layout.Module(m).descriptors.At(i));
            }
        }
        bytesOfModuleCount[layout.ModuleCount()] = total;
    }
    EXPECT_EQ(bytesOfModuleCount, (std::map<std::uint32_t, std::uint32_t>{{6, 18399}, {2, 4522}, {1, 4495}}));
}

TEST(Catalogue, AttributesHoldForEveryNumberOfARow) {
    const ParamDescriptor& first = descriptorOf(BaseList(), -40);
    EXPECT_EQ(first.category, 1U);
    EXPECT_EQ(first.sourcePolicy, 1U);
    EXPECT_EQ(first.applyPriority, 1U);
    const ParamDescriptorList& last = FindLayout(test::firstEngine)->Module(5).descriptors;
    for (const std::int32_t id : {9, 10, 58, 59}) {
        EXPECT_EQ(descriptorOf(last, id).applyPriority, 100U) << id;
    }
    for (const std::int32_t id : {142, 143}) {
        EXPECT_EQ(descriptorOf(last, id).applyPriority, 152U) << id;
    }
    EXPECT_EQ(descriptorOf(last, 11).applyPriority, 0U);
    EXPECT_EQ(descriptorOf(last, 148).category, 3U);
    EXPECT_EQ(descriptorOf(last, 152).category, 1U);
    EXPECT_EQ(descriptorOf(BaseList(), -33).sourcePolicy, 2U);
    EXPECT_EQ(descriptorOf(BaseList(), -33).applyPriority, 50U);
    EXPECT_EQ(descriptorOf(BaseList(), -17).sourcePolicy, 2U);
}

TEST(Catalogue, OnlyTheKnownPrioritiesAreInUse) {
    constexpr std::array known = {0U, 1U, 9U, 10U, 11U, 50U, 100U, 150U, 151U, 152U, 200U};
    std::map<std::uint32_t, int> seen;
    for (const ParamDescriptorList& list : allLists()) {
        for (std::uint32_t i = 0; i < list.Count(); ++i) {
            ++seen[list.At(i).applyPriority];
        }
    }
    EXPECT_EQ(seen.size(), known.size());
    for (const std::uint32_t priority : known) {
        EXPECT_TRUE(seen.contains(priority)) << priority;
    }
}

TEST(Catalogue, FloatsOfOneAreStoredAsFloats) {
    EXPECT_EQ(payload(BaseList(), -22), bytes(0x00, 0x00, 0x80, 0x3F));
    EXPECT_EQ(payload(BaseList(), -5), bytes(0x00, 0x00, 0x80, 0x3F));
}

TEST(Catalogue, ABlockBetweenWordsHasItsLengthInZeros) {
    const std::vector<std::byte> found = payload(FindLayout(test::firstEngine)->Module(5).descriptors, 13);
    std::vector<std::byte> expected(2052);
    expected[1] = std::byte{0x02};
    EXPECT_EQ(found, expected);
}

TEST(Catalogue, TheSecondWordMayHaveTheDefault) {
    const std::vector<std::byte> found = payload(BaseList(), -14);
    std::vector<std::byte> expected(2052);
    expected[3] = std::byte{0x02};
    EXPECT_EQ(found, expected);
}

TEST(Catalogue, AnEmptyBlockIsOneFieldAndNoBytes) {
    const ParamDescriptor& empty = descriptorOf(BaseList(), -26);
    EXPECT_EQ(empty.fieldCount, 1U);
    ASSERT_NE(empty.field(0), nullptr);
    EXPECT_EQ(empty.field(0)->type, ParamFieldType::Bytes);
    EXPECT_EQ(empty.field(0)->isBytes, 1U);
    EXPECT_EQ(empty.field(0)->length, 0U);
    EXPECT_TRUE(defaultPayload(empty).empty());
}

TEST(Catalogue, ABlocksDefaultRepeatsItsLengthAndIsNoByteOfThePayload) {
    const ParamField* const block = descriptorOf(BaseList(), -16).field(1);
    ASSERT_NE(block, nullptr);
    EXPECT_EQ(block->length, 2048U);
    EXPECT_EQ(block->defaultValue, 2048U);
}

TEST(Catalogue, AFieldPastTheCountIsNone) {
    const ParamDescriptor& many = descriptorOf(FindLayout(test::thirdEngine)->Module(0).descriptors, 7);
    EXPECT_EQ(many.fieldCount, 44U);
    EXPECT_NE(many.field(43), nullptr);
    EXPECT_EQ(many.field(44), nullptr);
    EXPECT_EQ(many.field(0xFFFFFFFFU), nullptr);
}

TEST(Catalogue, FieldWidthsAreThoseOfTheirTypes) {
    const std::map<ParamFieldType, std::uint64_t> widths = {
        {ParamFieldType::Bool, 1},    {ParamFieldType::Byte8, 1}, {ParamFieldType::Word16A, 2},
        {ParamFieldType::Word16B, 2}, {ParamFieldType::Int32, 4}, {ParamFieldType::UInt32, 4},
        {ParamFieldType::Float32, 4}};
    for (const ParamDescriptorList& list : allLists()) {
        for (std::uint32_t i = 0; i < list.Count(); ++i) {
            for (std::uint32_t f = 0; f < list.At(i).fieldCount; ++f) {
                const ParamField& field = *list.At(i).field(f);
                EXPECT_EQ(field.isBytes != 0, field.type == ParamFieldType::Bytes);
                if (field.isBytes == 0) {
                    EXPECT_EQ(field.length, widths.at(field.type));
                }
            }
        }
    }
}

TEST(Catalogue, AFieldOfAnUnknownTypeIsNoticed) {
    static constexpr ParamField strange{static_cast<ParamFieldType>(8), 4, 0, 0};
    const ParamDescriptor descriptor{0, 1, 0, 0, 0, 1, &strange};
    EXPECT_FALSE(hasKnownFields(descriptor));
    EXPECT_TRUE(hasKnownFields(BaseList().At(0)));
}

TEST(GuidHash, IsTheCombinationOfTheHalvesHashes) {
    // Computed apart, by the formula, for bytes 0 to 15 in order.
    const GUID counting = {0x03020100, 0x0504, 0x0706, {8, 9, 10, 11, 12, 13, 14, 15}};
    const auto fnv1a = [](unsigned first) {
        std::uint64_t hash = 14695981039346656037U;
        for (unsigned byte = first; byte < first + 8; ++byte) {
            hash ^= byte;
            hash *= 1099511628211U;
        }
        return hash;
    };
    const std::uint64_t h1 = fnv1a(0);
    const std::uint64_t h2 = fnv1a(8);
    EXPECT_EQ(GuidHash()(counting), (h2 + (h1 * 64) + 11400714819323198485U + (h1 / 4)) ^ h1);
}

}  // namespace
}  // namespace korva::params
