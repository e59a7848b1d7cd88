#include "engine/engine_config_document.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include <limits>
#include <string>
#include <utility>
#include <vector>

#include "engine/engine_table.h"
#include "tests/support/engines.h"

namespace korva::engine {
namespace {

using framework::Ref;
using nlohmann::json;
using test::firstEngine;
using test::secondEngine;
using test::thirdEngine;
using test::unknownEngine;

using Document = Ref<const EngineConfigDocument>;

constexpr std::uint32_t bothFlags = modeHardware | modeSimulation;

std::string textOf(std::uint32_t flags, const GUID& engine, std::uint32_t version = 7,
                   std::string_view endpoint = "speakers") {
    return dumpEngineConfigDocument(*buildEngineConfigDocument(flags, engine, version, endpoint));
}

bool differ(const json& current, const json& candidate) {
    return documentsDiffer(*Document::adopt(new EngineConfigDocument(current)),
                           *Document::adopt(new EngineConfigDocument(candidate)));
}

TEST(EngineConfigDocument, OfTheFirstEngineNamesAModuleInEachPass) {
    EXPECT_EQ(textOf(0, firstEngine),
              R"({"EngineId":"{14a6de13-1380-0e52-aee0-8803e93e40c8}","OutEndpointId":"speakers",)"
              R"("PlatformModuleNames":["TANMER64"],"PlatformName":"Float","PresetVersion":7})");
    EXPECT_EQ(textOf(modeHardware, firstEngine),
              R"({"EngineId":"{14a6de13-1380-0e52-aee0-8803e93e40c8}","Hardware":true,)"
              R"("OutEndpointId":"speakers","PlatformModuleNames":["DRIVOL64"],"PlatformName":"iSST",)"
              R"("PresetVersion":7})");
}

TEST(EngineConfigDocument, OfTheSecondEngineNamesNoModule) {
    EXPECT_EQ(textOf(0, secondEngine),
              R"({"EngineId":"{e31ba197-f8b2-5154-b081-1e8059747558}","OutEndpointId":"speakers",)"
              R"("PlatformName":"Float","PresetVersion":7})");
    EXPECT_EQ(textOf(modeHardware, secondEngine),
              R"({"EngineId":"{e31ba197-f8b2-5154-b081-1e8059747558}","Hardware":true,)"
              R"("OutEndpointId":"speakers","PlatformName":"iSST","PresetVersion":7})");
}

TEST(EngineConfigDocument, OfTheThirdEngineNamesAModuleInTheFloatPassOnly) {
    EXPECT_EQ(textOf(0, thirdEngine),
              R"({"EngineId":"{c9f475bc-13e4-6150-ae88-790995afc7c1}","OutEndpointId":"speakers",)"
              R"("PlatformModuleNames":["PELLUX64"],"PlatformName":"Float","PresetVersion":7})");
    EXPECT_EQ(textOf(modeHardware, thirdEngine),
              R"({"EngineId":"{c9f475bc-13e4-6150-ae88-790995afc7c1}","Hardware":true,)"
              R"("OutEndpointId":"speakers","PlatformName":"iSST","PresetVersion":7})");
}

TEST(EngineConfigDocument, OfAnEngineThatNobodyKnowsIsWholeButForAModule) {
    EXPECT_EQ(textOf(0, unknownEngine),
              R"({"EngineId":"{01234567-89ab-cdef-0123-456789abcdef}","OutEndpointId":"speakers",)"
              R"("PlatformName":"Float","PresetVersion":7})");
    EXPECT_EQ(textOf(modeHardware, GUID{}),
              R"({"EngineId":"{00000000-0000-0000-0000-000000000000}","Hardware":true,)"
              R"("OutEndpointId":"speakers","PlatformName":"iSST","PresetVersion":7})");
}

TEST(EngineConfigDocument, HasSimulationInAHardwarePassWithItsBitOnly) {
    EXPECT_EQ(textOf(bothFlags, firstEngine),
              R"({"EngineId":"{14a6de13-1380-0e52-aee0-8803e93e40c8}","Hardware":true,)"
              R"("OutEndpointId":"speakers","PlatformModuleNames":["DRIVOL64"],"PlatformName":"iSST",)"
              R"("PresetVersion":7,"Simulation":true})");
    EXPECT_EQ(textOf(modeSimulation, firstEngine), textOf(0, firstEngine));
    EXPECT_NE(textOf(bothFlags, secondEngine).find(R"(,"Simulation":true})"), std::string::npos);
}

TEST(EngineConfigDocument, IgnoresBitsOfFlagsThatMeanNothing) {
    EXPECT_EQ(textOf(0xFFFFFFFC, firstEngine), textOf(0, firstEngine));
    EXPECT_EQ(textOf(0xFFFFFFFF, firstEngine), textOf(bothFlags, firstEngine));
}

TEST(EngineConfigDocument, HasItsVersionAsAnUnsignedNumberOf32Bits) {
    EXPECT_NE(textOf(0, secondEngine, 0).find(R"("PresetVersion":0})"), std::string::npos);
    EXPECT_NE(textOf(0, secondEngine, 0xFFFFFFFF).find(R"("PresetVersion":4294967295})"), std::string::npos);
    const Document document = buildEngineConfigDocument(0, secondEngine, 0, "");
    EXPECT_TRUE(document->json().at("PresetVersion").is_number_unsigned());
}

TEST(EngineConfigDocument, LeavesTheEndpointsUtf8AsItIs) {
    const std::string endpoint = "H\u00f6rer \u97f3 \U0001F50A";

    EXPECT_NE(textOf(0, secondEngine, 7, endpoint).find("\"OutEndpointId\":\"" + endpoint + "\","),
              std::string::npos);
}

TEST(EngineConfigDocument, EscapesWhatJsonMust) {
    EXPECT_NE(textOf(0, secondEngine, 7, "a\"b\\c\n\x01").find(R"("OutEndpointId":"a\"b\\c\n\u0001")"),
              std::string::npos);
}

TEST(EngineConfigDocument, HasAnEmptyEndpointAsEmptyText) {
    EXPECT_NE(textOf(0, secondEngine, 7, "").find(R"("OutEndpointId":"",)"), std::string::npos);
}

TEST(EngineConfigDocument, RaisesForAnEndpointThatIsNoUtf8) {
    for (const char* text : {"\x80", "abc\xC3", "\xED\xA0\x80", "\xC0\xAF", "\xF5\x80\x80\x80"}) {
        const Document document = buildEngineConfigDocument(0, firstEngine, 7, text);
        EXPECT_THROW(static_cast<void>(dumpEngineConfigDocument(*document)), json::type_error);
    }
}

TEST(EngineConfigDocument, TellsWhatItHas) {
    const Document document = buildEngineConfigDocument(modeHardware, firstEngine, 3'000'000'000, "x");

    EXPECT_EQ(document->engineId(), firstEngine);
    EXPECT_EQ(document->presetVersion(), 3'000'000'000);
    EXPECT_EQ(document->platformName(), "iSST");
    EXPECT_EQ(document->platformModuleNames(), std::vector<std::string>{"DRIVOL64"});
}

TEST(EngineConfigDocument, TellsNothingOfWhatIsAbsent) {
    const Document document = Document::adopt(new EngineConfigDocument(json::object()));

    EXPECT_EQ(document->engineId(), GUID{});
    EXPECT_EQ(document->presetVersion(), 0U);
    EXPECT_EQ(document->platformName(), "");
    EXPECT_TRUE(document->platformModuleNames().empty());
}

TEST(EngineConfigDocument, StaysForTheLastOfItsShares) {
    Document first = buildEngineConfigDocument(0, firstEngine, 7, "x");
    const Document second = first;
    first = nullptr;

    EXPECT_EQ(second->presetVersion(), 7U);
}

TEST(ModeFlagsOfStore, DropSimulationOnly) {
    EXPECT_EQ(modeFlagsOfStore(0), 0U);
    EXPECT_EQ(modeFlagsOfStore(1), 1U);
    EXPECT_EQ(modeFlagsOfStore(2), 0U);
    EXPECT_EQ(modeFlagsOfStore(3), 1U);
    EXPECT_EQ(modeFlagsOfStore(0xFFFFFFFF), 0xFFFFFFFDU);
    EXPECT_EQ(textOf(modeFlagsOfStore(3), firstEngine), textOf(modeHardware, firstEngine));
}

TEST(DocumentsDiffer, NotWithTheSameInputs) {
    const Document one = buildEngineConfigDocument(bothFlags, firstEngine, 7, "x");
    const Document other = buildEngineConfigDocument(bothFlags, firstEngine, 7, "x");

    EXPECT_FALSE(documentsDiffer(*one, *other));
    EXPECT_FALSE(documentsDiffer(*one, *one));
}

TEST(DocumentsDiffer, WithAChangeOfAnyInput) {
    const Document one = buildEngineConfigDocument(modeHardware, firstEngine, 7, "x");

    EXPECT_TRUE(documentsDiffer(*one, *buildEngineConfigDocument(modeHardware, firstEngine, 8, "x")));
    EXPECT_TRUE(documentsDiffer(*one, *buildEngineConfigDocument(modeHardware, firstEngine, 7, "X")));
    EXPECT_TRUE(documentsDiffer(*one, *buildEngineConfigDocument(modeHardware, thirdEngine, 7, "x")));
    EXPECT_TRUE(documentsDiffer(*one, *buildEngineConfigDocument(bothFlags, firstEngine, 7, "x")));
    EXPECT_TRUE(documentsDiffer(*one, *buildEngineConfigDocument(0, firstEngine, 7, "x")));
}

TEST(DocumentsDiffer, NotByTheOrderInWhichMembersWereAdded) {
    EXPECT_FALSE(
        differ(json::parse(R"({"a":1,"b":[true,null]})"), json::parse(R"({"b":[true,null],"a":1})")));
}

TEST(DocumentsDiffer, ByAMemberThatOnlyOneHas) {
    EXPECT_TRUE(differ({{"a", 1}}, {{"a", 1}, {"b", nullptr}}));
    EXPECT_TRUE(differ({{"a", 1}, {"b", nullptr}}, {{"a", 1}}));
    EXPECT_TRUE(differ({{"a", {1, 2}}}, {{"a", {1, 2, 3}}}));
    EXPECT_TRUE(differ({{"a", {1, 2}}}, {{"a", {2, 1}}}));
}

TEST(DocumentsDiffer, ByTheValueOfANumberAndNotByItsKind) {
    EXPECT_FALSE(differ({{"n", 7}}, {{"n", 7U}}));
    EXPECT_FALSE(differ({{"n", 7U}}, {{"n", 7.0}}));
    EXPECT_FALSE(differ({{"n", -7}}, {{"n", -7.0}}));
    EXPECT_TRUE(differ({{"n", 7}}, {{"n", 7.5}}));
    EXPECT_TRUE(differ({{"n", 1}}, {{"n", true}}));
    EXPECT_TRUE(differ({{"n", 1}}, {{"n", "1"}}));
}

// What can't be ordered doesn't differ: a rule about whole values, which no document breaks by a member.
TEST(DocumentsDiffer, NotWhereTheWholeValuesCannotBeOrdered) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const json discarded(json::value_t::discarded);

    EXPECT_FALSE(differ(nan, nan));
    EXPECT_FALSE(differ(nan, 1));
    EXPECT_FALSE(differ(2U, nan));
    EXPECT_FALSE(differ(discarded, discarded));
    EXPECT_FALSE(differ(discarded, json::object()));
    EXPECT_FALSE(differ({{"a", 1}}, discarded));
}

TEST(DocumentsDiffer, WhereAMemberIsNoNumber) {
    const double nan = std::numeric_limits<double>::quiet_NaN();

    EXPECT_TRUE(differ({{"n", nan}}, {{"n", nan}}));
    EXPECT_TRUE(differ(nan, "text"));
    EXPECT_TRUE(differ(nan, json::object()));
}

TEST(EngineTable, HasAModuleForThreeOfAllPasses) {
    using enum EnginePlatform;
    EXPECT_EQ(moduleName(firstEngine, floatingPoint), "TANMER64");
    EXPECT_EQ(moduleName(firstEngine, hardware), "DRIVOL64");
    EXPECT_EQ(moduleName(secondEngine, floatingPoint), "");
    EXPECT_EQ(moduleName(secondEngine, hardware), "");
    EXPECT_EQ(moduleName(thirdEngine, floatingPoint), "PELLUX64");
    EXPECT_EQ(moduleName(thirdEngine, hardware), "");
    EXPECT_EQ(moduleName(unknownEngine, floatingPoint), "");
    EXPECT_EQ(moduleName(GUID{}, hardware), "");
}

TEST(EngineTable, ComparesAllOfAnEnginesGuid) {
    GUID similar = firstEngine;
    similar.Data4[7] ^= 1;
    EXPECT_EQ(moduleName(similar, EnginePlatform::floatingPoint), "");
    similar = thirdEngine;
    similar.Data1 ^= 0x80000000;
    EXPECT_EQ(moduleName(similar, EnginePlatform::floatingPoint), "");
}

TEST(EngineTable, NamesThePlatforms) {
    EXPECT_EQ(platformName(EnginePlatform::floatingPoint), "Float");
    EXPECT_EQ(platformName(EnginePlatform::hardware), "iSST");
}

}  // namespace
}  // namespace korva::engine
