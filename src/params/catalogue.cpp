#include "params/catalogue.h"

#include <algorithm>
#include <cstring>
#include <unordered_map>

#include "params/catalogue_rows.h"
#include "params/guid_hash.h"

namespace korva::params {
namespace {

/// Module index -1.
constexpr char baseRows[] =
    "-40: u (category 1, policy 1, priority 1); -39: b; -38: b (policy 1); -37: b (category 1, policy 1); "
    "-36: b (policy 1); -35: b (category 1); -34: b (category 1, policy 1); "
    "-33: u (policy 2, priority 50); -32: u; -31: f; -30..-29: b; -28..-27: f; -26: z0 (priority 9); "
    "-25: i (policy 1); -24: f (policy 1); -23: b f*2; -22: f=1; -21..-20: z0; -19: b (policy 1); -18: b; "
    "-17: b (policy 2); -16: w=512 z2048; -15: b; -14: w w=512 z2048; -13: b w; -12..-7: z0; "
    "-6: z0 (priority 10); -5..-4: f=1; -3..-1: b";

/// What the list of every module begins with.
constexpr char commonHead[] =
    "-9: i (policy 1); -8..-7: f=1; -6..-5: f; -4..-3: b; -2: b (priority 11); -1: b (priority 10); "
    "0: b (priority 9)";

constexpr char firstRows0[] = "1: z0; 2..6: f*3 b; 7: b; 8..13: f; 14..15: f*2 b; 16: b";

constexpr char firstRows1[] =
    "1: z0; 2: f; 3: b; 4: f*3; 5: b; 6: f*3; 7: b; 8: f*3; 9: b; 10: f*3; 11: b; 12..13: f; 14: b; "
    "15: f*2; 16: b; 17: f*2; 18..19: b; 20..25: f; 26: b; 27..28: f; 29: f*12; 30: f; 31: f*12; 32: f*3; "
    "33: f*44; 34: b; 35: f; 36: b; 37: f; 38: b; 39..40: f; 41: f*3";

constexpr char firstRows2[] = "1: z0; 2..4: f*3 b; 5..6: f*2 b; 7: b; 8..13: f";

constexpr char firstRows3[] =
    "1: z0; 2: b; 3: f; 4: f*2; 5: f*4 c; 6..10: b; 11: f*3 c; 12: b; 13: f*3 c; 14: b; 15: f*3 c; 16: b; "
    "17..22: f; 23: b; 24: f*3 c; 25: b; 26: f*3 c; 27: b; 28: f; 29: b; 30: f*2; 31: b; 32: f*2; "
    "33..34: b; 35..40: f; 41..42: b; 43: f*3 c; 44..45: f; 46..48: b; 49: f*3 c; 50: b; 51: f*3 c; "
    "52: b; 53: f*3 c";

constexpr char firstRows4[] =
    "1: f*2; 2..7: f; 8: b; 9..10: f; 11..13: f*2; 14: f; 15..19: b*2 f*7; 20: b; 21..22: b f*3 h; "
    "23..24: f; 25..26: b";

constexpr char firstRows5[] =
    "1..8: b; 9..10: f (priority 100); 11..12: b; 13: w=512 z2048 w (priority 150); "
    "14: w z2048 w (priority 150); 15..16: b; 17..18: w=512 z2048; 19..20: b f; 21..26: c f*3; 27: b f*3; "
    "28: h c; 29..30: b; 31: f*2; 32..35: f; 36..39: b; 40..53: f; 54..55: b; 56..57: f; "
    "58..59: f (priority 100); 60..71: f; 72..77: b; 78..79: f; 80..81: w; 82..89: f; 90..93: b f*2; "
    "94..95: b; 96..109: f; 110: b; 111..114: h; 115..116: b; 117..126: b f*3; 127: z0; 128: f; 129: c; "
    "130: f (priority 200); 131..132: f; 133..134: b; 135..140: f; 141: h (priority 200); "
    "142..143: b (priority 152); 144: w=512 z2048 (priority 151); 145: c; 146..147: c f*3; "
    "148: w z2048 (category 3); 149..151: b; 152: b (category 1)";

constexpr char secondRows1[] =
    "1: b; 2: f; 3..4: b; 5: f*3; 6: f*10; 7: f*5 b*2; 8: f*6; 9: f*3 b*2; 10: f*2; 11: f*3 b*2; "
    "12: f*10; 13: f*5 b*2; 14: f*10; 15: f*5 b*2; 16: h*2 f*4; 17: h f*3";

constexpr char thirdRows0[] = "1..2: f; 3: f*12; 4: f; 5: f*12; 6: f*3; 7: f*44; 8: b";

/// The list that `Rows` describe. `Count` is how many it has to have.
template <std::size_t Count, const auto&... Rows>
constexpr ParamDescriptorList listOf() {
    static_assert(catalogueDescriptors<Rows...>.size() == Count);
    return ParamDescriptorList(catalogueDescriptors<Rows...>);
}

constexpr ParamDescriptorList baseDescriptors = listOf<40, baseRows>();

constexpr ParamModuleRecord firstModules[] = {
    {{0x2A485B70, 0xF8C7, 0x5154, {0xB0, 0x81, 0x14, 0x89, 0x44, 0x0E, 0x29, 0x99}},
     listOf<26, commonHead, firstRows0>(),
     0},
    {{0xBE2A4485, 0xB24B, 0x6A5A, {0xAB, 0x72, 0x9A, 0x2D, 0x14, 0xAC, 0x93, 0x33}},
     listOf<51, commonHead, firstRows1>(),
     1},
    {{0xF9DDB343, 0x13BE, 0xA650, {0xAE, 0x96, 0x8F, 0x37, 0x51, 0xD3, 0xA8, 0xCC}},
     listOf<23, commonHead, firstRows2>(),
     2},
    {{0x2A529A68, 0xF7A6, 0xBF53, {0xB8, 0x06, 0xE9, 0x34, 0xB3, 0xA9, 0x8E, 0xC2}},
     listOf<63, commonHead, firstRows3>(),
     3},
    {{0xF77E0018, 0x6F75, 0xFF52, {0xAB, 0xC2, 0x7D, 0x91, 0x57, 0x0F, 0x10, 0xFC}},
     listOf<36, commonHead, firstRows4>(),
     4},
    {{0x2C9F92A8, 0x6185, 0xB35D, {0xA1, 0x5C, 0x89, 0xE5, 0x24, 0xF1, 0x1F, 0xFE}},
     listOf<162, commonHead, firstRows5>(),
     5},
};

constexpr ParamModuleRecord secondModules[] = {
    {{0xCA865F50, 0xF837, 0x5154, {0xB0, 0x81, 0x0C, 0xCF, 0xC5, 0x4B, 0xB0, 0xF6}},
     listOf<10, commonHead>(),
     0},
    {{0xFBDB2EBB, 0xF767, 0x1454, {0x93, 0x57, 0xB4, 0x65, 0xA5, 0x50, 0x63, 0x21}},
     listOf<27, commonHead, secondRows1>(),
     1},
};

constexpr ParamModuleRecord thirdModules[] = {
    {{0x4224DACA, 0x41CE, 0x7554, {0x85, 0x3F, 0x66, 0xC3, 0xE9, 0x27, 0x6D, 0xD0}},
     listOf<18, commonHead, thirdRows0>(),
     0},
};

constexpr ParamLayout layouts[] = {
    ParamLayout({0x14A6DE13, 0x1380, 0x0E52, {0xAE, 0xE0, 0x88, 0x03, 0xE9, 0x3E, 0x40, 0xC8}}, firstModules),
    ParamLayout({0xE31BA197, 0xF8B2, 0x5154, {0xB0, 0x81, 0x1E, 0x80, 0x59, 0x74, 0x75, 0x58}},
                secondModules),
    ParamLayout({0xC9F475BC, 0x13E4, 0x6150, {0xAE, 0x88, 0x79, 0x09, 0x95, 0xAF, 0xC7, 0xC1}}, thirdModules),
};

/// Whether ids ascend one by one from the first, as they do in every list.
constexpr bool isDense(const ParamDescriptorList& list, std::int32_t first) {
    for (std::uint32_t i = 0; i < list.Count(); ++i) {
        if (list.At(i).paramId != first + static_cast<std::int32_t>(i)) {
            return false;
        }
    }
    return true;
}

constexpr bool isSound(const ParamDescriptor& descriptor) {
    return descriptor.fieldCount >= 1 && descriptor.fieldCount <= 44 && descriptor.sourcePolicy <= 2 &&
           (descriptor.category <= 1 || descriptor.category == 3);
}

constexpr bool isSound(const ParamDescriptorList& list) {
    for (std::uint32_t i = 0; i < list.Count(); ++i) {
        if (!isSound(list.At(i))) {
            return false;
        }
    }
    return true;
}

/// The bytes of all parameters of a list.
constexpr std::uint32_t bytesOf(const ParamDescriptorList& list) {
    std::uint32_t bytes = 0;
    for (std::uint32_t i = 0; i < list.Count(); ++i) {
        bytes += payloadSize(list.At(i));
    }
    return bytes;
}

/// The checks of one layout as it is built: its modules, and its bytes with those of the base list.
constexpr bool isSound(const ParamLayout& layout, std::uint32_t bytes) {
    std::uint32_t found = bytesOf(baseDescriptors);
    for (std::uint32_t i = 0; i < layout.ModuleCount(); ++i) {
        const ParamModuleRecord& module = layout.Module(i);
        if (module.moduleIndex != i || !isDense(module.descriptors, -9) || !isSound(module.descriptors)) {
            return false;
        }
        found += bytesOf(module.descriptors);
    }
    return found == bytes;
}

static_assert(isDense(baseDescriptors, -40) && isSound(baseDescriptors));
static_assert(isSound(layouts[0], 18'399) && isSound(layouts[1], 4'522) && isSound(layouts[2], 4'495));

}  // namespace

const ParamLayout* FindLayout(const GUID& engineId) {
    static const auto byEngine = [] {
        std::unordered_map<GUID, const ParamLayout*, GuidHash> map(8);
        for (const ParamLayout& layout : layouts) {
            map.emplace(layout.engineId, &layout);
        }
        return map;
    }();
    const auto found = byEngine.find(engineId);
    return found == byEngine.end() ? nullptr : found->second;
}

std::span<const ParamLayout> allLayouts() noexcept {
    return layouts;
}

const ParamDescriptorList& BaseList() noexcept {
    return baseDescriptors;
}

std::vector<std::byte> defaultPayload(const ParamDescriptor& descriptor) {
    std::vector<std::byte> payload(payloadSize(descriptor));
    std::byte* at = payload.data();
    for (const ParamField& field : std::span(descriptor.fields, descriptor.fieldCount)) {
        if (field.isBytes == 0) {
            std::memcpy(at, &field.defaultValue, field.length);  // little-endian, as the processor is
        }
        at += field.length;
    }
    return payload;
}

bool hasKnownFields(const ParamDescriptor& descriptor) noexcept {
    return std::all_of(
        descriptor.fields, descriptor.fields + descriptor.fieldCount,
        [](const ParamField& field) { return static_cast<std::size_t>(field.type) < paramFieldTypeCount; });
}

}  // namespace korva::params
