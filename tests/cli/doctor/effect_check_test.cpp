#include "korva/doctor/effect_check.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <string>
#include <vector>

#include "korva/doctor/chunk_blob.h"
#include "params/chunk_plan.h"
#include "platform/property_key.h"
#include "platform/stored_values.h"
#include "platform/unicode.h"

namespace korva::tool {
namespace {

using params::EffectKind;
using platform::numberValue;
using platform::RegistryValue;
using platform::toWide;

constexpr const char* floatEngine = "{c9f475bc-13e4-6150-ae88-790995afc7c1}";
constexpr const char* hardwareEngine = "{14a6de13-1380-0e52-aee0-8803e93e40c8}";
constexpr const char* enginelessEngine = "{e31ba197-f8b2-5154-b081-1e8059747558}";
constexpr const char* ownText = "{c26ad82e-b1cb-4bdf-87e9-cacd7fd6c6fd}";

RegistryValue text(const char* utf8) {
    return platform::stringValue(toWide(utf8));
}

RegistryValue blobOf(std::size_t size) {
    return {platform::registry_type::binary, std::vector<std::byte>(size)};
}

params::ChunkPlan planOf(const char* engine) {
    return *params::planChunks(*params::FindLayout(platform::GuidFromText(engine)));
}

/// Bytes of a chunk in which every parameter has its default size.
std::size_t wholeBlob(const params::ChunkPlan& plan, std::uint32_t chunk) {
    std::size_t bytes = 4;
    for (const params::PlannedParameter& parameter : plan.parameters) {
        bytes += parameter.chunk == chunk ? parameter.size : 0;
    }
    return bytes;
}

/// An endpoint's properties: a whole mode effect, of which tests change something.
class EffectCheck : public testing::Test {
protected:
    EffectCheck() {
        values[select(EffectKind::mode)] = text(ownText);
        values[own(0)] = numberValue(1);
        values[own(1)] = numberValue(0);
        values[own(2)] = text(floatEngine);
        for (std::uint32_t chunk = 0; chunk < plan.chunkCount; ++chunk) {
            values[own(3000 + chunk)] = blobOf(wholeBlob(plan, chunk));
        }
    }

    static std::string select(EffectKind kind) { return platform::KeyToText(params::selectionKey(kind)); }
    static std::string own(DWORD pid) { return platform::KeyToText({platform::GuidFromText(ownText), pid}); }

    [[nodiscard]] EffectReport report(EffectKind kind = EffectKind::mode) const {
        std::vector<PROPERTYKEY> keys;
        for (const auto& [name, value] : values) {
            keys.push_back(platform::TextToKey(name));
        }
        return examineEffect(
            {"{0.0.0.00000000}.{x}", "Speakers", kind},
            [&](const PROPERTYKEY& key) {
                const auto found = values.find(platform::KeyToText(key));
                return found == values.end() ? std::nullopt : std::optional(found->second);
            },
            keys);
    }

    /// The only finding, a fault.
    [[nodiscard]] Finding fault() const {
        const Findings findings = report().findings;
        EXPECT_EQ(findings.size(), 1u);
        const Finding only = findings.empty() ? Finding() : findings.front();
        EXPECT_EQ(only.subject, Subject::endpoints);
        EXPECT_EQ(only.severity, Severity::fault);
        EXPECT_NE(only.what.find("the mfx effect of \"Speakers\""), std::string::npos) << only.what;
        EXPECT_EQ(only.remedy,
                  "korva preset install PRESET.json --endpoint \"{0.0.0.00000000}.{x}\" --effect mfx");
        return only;
    }

    const params::ChunkPlan plan = planOf(floatEngine);
    std::map<std::string, RegistryValue> values;
};

bool has(const std::string& whole, const std::string& part) {
    return whole.find(part) != std::string::npos;
}

TEST_F(EffectCheck, FindsNothingInAWholePreset) {
    const EffectReport whole = report();
    EXPECT_TRUE(whole.findings.empty());
    EXPECT_TRUE(whole.isSelected);
    EXPECT_EQ(whole.modules, std::vector<std::string>{"PELLUX64"});
}

TEST_F(EffectCheck, AnEffectThatNothingSelectsIsNoFault) {
    for (const EffectKind kind : {EffectKind::stream, EffectKind::endpoint}) {
        const EffectReport none = report(kind);
        EXPECT_TRUE(none.findings.empty());
        EXPECT_FALSE(none.isSelected);
        EXPECT_TRUE(none.modules.empty());
    }
}

TEST_F(EffectCheck, ASelectionMustBeTextThatIsAGuid) {
    for (const RegistryValue& bad :
         {text("none"), text(""), text("{00000000-0000-0000-0000-000000000000}")}) {
        values[select(EffectKind::mode)] = bad;
        EXPECT_TRUE(has(fault().cause, "is no GUID")) << fault().cause;
        EXPECT_TRUE(report().isSelected);
    }
    for (const RegistryValue& bad : {numberValue(7), blobOf(38), blobOf(0)}) {
        values[select(EffectKind::mode)] = bad;
        EXPECT_TRUE(has(fault().cause, "is no text")) << fault().cause;
    }
}

TEST_F(EffectCheck, ASelectionOfHugeTextIsShownInPart) {
    values[select(EffectKind::mode)] = text(std::string(100000, 'x').c_str());
    EXPECT_LT(fault().cause.size(), 300u);
}

TEST_F(EffectCheck, APresetNeedsAVersion) {
    values[own(0)] = numberValue(0);
    EXPECT_TRUE(has(fault().cause, "is 0"));
    values[own(0)] = text("1");
    EXPECT_TRUE(has(fault().cause, "is no number"));
    values[own(0)] = {platform::registry_type::dword, std::vector<std::byte>(5, std::byte{1})};
    EXPECT_TRUE(has(fault().cause, "is no number"));
    values.erase(own(0));
    EXPECT_TRUE(has(fault().cause, "is missing"));
}

TEST_F(EffectCheck, AModeIsANumberAndMayBeMissing) {
    values[own(1)] = text("hardware");
    EXPECT_TRUE(has(fault().what, "mode"));
    values.erase(own(1));
    EXPECT_TRUE(report().findings.empty());
}

TEST_F(EffectCheck, UnknownBitsOfAModeAreARemark) {
    for (const std::uint32_t known : {0u, 1u, 2u, 3u}) {
        values[own(1)] = numberValue(known);
        EXPECT_TRUE(report().findings.empty()) << known;
    }
    values[own(1)] = numberValue(0x80000004);
    ASSERT_EQ(report().findings.size(), 1u);
    EXPECT_EQ(report().findings.front().severity, Severity::remark);
    EXPECT_TRUE(has(report().findings.front().cause, "0x80000004"));
}

TEST_F(EffectCheck, AnEngineMustBeNamedAndKnown) {
    values[own(2)] = text("{11111111-1111-1111-1111-111111111111}");
    EXPECT_TRUE(has(fault().what, "not known"));
    EXPECT_TRUE(report().modules.empty());
    values[own(2)] = text("equaliser");
    EXPECT_TRUE(has(fault().cause, "is no GUID: 'equaliser'"));
    values[own(2)] = numberValue(3);
    EXPECT_TRUE(has(fault().cause, "is no text"));
    values.erase(own(2));
    EXPECT_TRUE(has(fault().cause, "is missing"));
}

TEST_F(EffectCheck, HardwareNeedsTheModuleOfItsOwnAndTheOtherOneToFallBackTo) {
    values = {{select(EffectKind::mode), text(ownText)},
              {own(0), numberValue(1)},
              {own(1), numberValue(1)},
              {own(2), text(hardwareEngine)}};
    EXPECT_TRUE(report().findings.empty());
    EXPECT_EQ(report().modules, (std::vector<std::string>{"DRIVOL64", "TANMER64"}));
    values[own(1)] = numberValue(0);
    EXPECT_EQ(report().modules, std::vector<std::string>{"TANMER64"});
}

TEST_F(EffectCheck, AnEngineWithoutAModuleIsARemark) {
    values = {{select(EffectKind::mode), text(ownText)},
              {own(0), numberValue(1)},
              {own(2), text(enginelessEngine)}};
    ASSERT_EQ(report().findings.size(), 1u);
    EXPECT_EQ(report().findings.front().severity, Severity::remark);
    EXPECT_TRUE(report().modules.empty());
}

TEST_F(EffectCheck, AChunkThatIsMissingIsNoFault) {
    values.erase(own(3001));
    EXPECT_TRUE(report().findings.empty());
}

TEST_F(EffectCheck, AChunkOfLessThanFourBytesIsPassedOver) {
    values[own(3001)] = blobOf(3);
    EXPECT_TRUE(has(fault().what, "Chunk 1"));
    EXPECT_TRUE(has(fault().cause, "has 3 of at least 4 bytes"));
}

TEST_F(EffectCheck, AChunkMustFitToTheByte) {
    const std::size_t whole = wholeBlob(plan, 1);
    values[own(3001)] = blobOf(whole - 1);
    EXPECT_TRUE(has(fault().cause, "too short"));
    values[own(3001)] = blobOf(4);
    EXPECT_TRUE(has(fault().cause, "only the first 0 of"));
    values[own(3001)] = blobOf(whole + 2);
    EXPECT_TRUE(has(fault().cause, "the last 2 belong to no parameter"));
}

TEST_F(EffectCheck, MoreEntriesThanAChunkHasBytesIsTooShort) {
    RegistryValue lying = blobOf(wholeBlob(plan, 0));
    lying.data[2] = lying.data[3] = std::byte{0xFF};
    values[own(3000)] = lying;
    EXPECT_TRUE(has(fault().cause, "too short"));
}

TEST_F(EffectCheck, AChunkMustBeBytes) {
    values[own(3000)] = text("chunk");
    EXPECT_TRUE(has(fault().cause, "holds no bytes"));
}

TEST_F(EffectCheck, ChunksBeyondTheEnginesAreOneFault) {
    values[own(3000 + plan.chunkCount)] = blobOf(4);
    EXPECT_TRUE(has(fault().cause, "beyond, 1 of them"));
    values[own(0xFFFFFFFF)] = numberValue(1);
    EXPECT_TRUE(has(fault().what, "more chunks"));
    EXPECT_TRUE(has(fault().cause, "beyond, 2 of them"));
}

TEST_F(EffectCheck, PropertiesOfOthersAreNotItsMatter) {
    values["{11111111-1111-1111-1111-111111111111},4000"] = blobOf(1);
    values[own(17)] = blobOf(1);
    EXPECT_TRUE(report().findings.empty());
}

TEST(ChunkBlob, AnEntryMayChangeASize) {
    const params::ChunkPlan plan = planOf(floatEngine);
    const auto first = std::find_if(plan.parameters.begin(), plan.parameters.end(),
                                    [](const auto& p) { return p.chunk == 0; });
    RegistryValue blob = blobOf(wholeBlob(plan, 0) + 4 - first->size);
    blob.data[2] = std::byte{1};  // one entry: of the first, no bytes
    EXPECT_EQ(chunkFault(plan, 0, blob), "");
}

}  // namespace
}  // namespace korva::tool
