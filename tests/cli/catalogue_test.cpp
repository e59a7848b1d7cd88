#include <map>
#include <nlohmann/json.hpp>

#include "tests/cli/preset_tool_test.h"

namespace korva::test {
namespace {

using Json = nlohmann::json;

class Catalogue : public ToolTest {
protected:
    [[nodiscard]] std::string catalogue(std::vector<std::string> arguments) const {
        arguments.insert(arguments.begin(), "catalogue");
        const Outcome outcome = runTool(std::move(arguments));
        EXPECT_EQ(outcome.exitCode, 0);
        EXPECT_EQ(outcome.error, "");
        return outcome.output;
    }
    [[nodiscard]] Json engine(const std::string& id) const {
        return Json::parse(catalogue({"--engine", id, "--json"}));
    }
};

TEST_F(Catalogue, ListsTheEnginesWithTheirNumbers) {
    const Json engines = Json::parse(catalogue({"--json"}))["engines"];
    ASSERT_EQ(engines.size(), 3U);
    const std::vector<std::array<int, 4>> expected = {
        {401, 18399, 13, 7}, {77, 4522, 4, 3}, {58, 4495, 4, 2}};
    for (std::size_t i = 0; i < 3; ++i) {
        const Json& listed = engines[i];
        EXPECT_EQ(listed["parameterCount"], expected[i][0]);
        EXPECT_EQ(listed["bytes"], expected[i][1]);
        EXPECT_EQ(listed["chunkCount"], expected[i][2]);
        EXPECT_EQ(listed["modules"].size(), static_cast<std::size_t>(expected[i][3]));
        EXPECT_FALSE(listed.contains("parameters"));
    }
    EXPECT_EQ(engines[0]["engine"], firstEngine);
    EXPECT_EQ(engines[0]["chunkCapacity"], 2052);
    EXPECT_EQ(engines[0]["modules"][0]["module"], -1);
    EXPECT_EQ(engines[0]["modules"][0]["id"], nullptr);
    EXPECT_EQ(engines[0]["modules"][6]["id"], "{2c9f92a8-6185-b35d-a15c-89e524f11ffe}");
    EXPECT_EQ(engines[0]["modules"][6]["parameterCount"], 162);
}

TEST_F(Catalogue, NamesTheModuleOfEachEngineAndPlatform) {
    const Json engines = Json::parse(catalogue({"--json"}))["engines"];
    EXPECT_EQ(engines[0]["dspModules"], Json({{"Float", "TANMER64"}, {"iSST", "DRIVOL64"}}));
    EXPECT_EQ(engines[1]["dspModules"], Json({{"Float", nullptr}, {"iSST", nullptr}}));
    EXPECT_EQ(engines[2]["dspModules"], Json({{"Float", "PELLUX64"}, {"iSST", nullptr}}));

    const std::string text = catalogue({});
    EXPECT_NE(text.find("DSP module: TANMER64 (Float), DRIVOL64 (iSST)\n"), std::string::npos);
    EXPECT_NE(text.find("DSP module: none\n"), std::string::npos);
    EXPECT_NE(text.find("DSP module: PELLUX64 (Float)\n"), std::string::npos);
}

TEST_F(Catalogue, TheTextHasTheSameNumbers) {
    const std::string text = catalogue({});
    for (const char* const part : {firstEngine, secondEngine, thirdEngine,
                                   "401 parameters, 18399 bytes in 13 chunks of at most 2052 bytes",
                                   "{4224daca-41ce-7554-853f-66c3e9276dd0}"}) {
        EXPECT_NE(text.find(part), std::string::npos) << part;
    }
    EXPECT_EQ(text.find("priority"), std::string::npos);
}

TEST_F(Catalogue, AnEnginesParametersFillItsChunksWithoutGaps) {
    for (const char* const id : {firstEngine, secondEngine, thirdEngine}) {
        const Json listed = engine(id);
        ASSERT_EQ(listed["parameters"].size(), listed["parameterCount"]);
        std::map<int, int> bytes;
        std::map<int, int> count;
        for (const Json& parameter : listed["parameters"]) {
            const int chunk = parameter["chunk"];
            EXPECT_EQ(parameter["position"], count[chunk]++);
            EXPECT_EQ(parameter["offset"], bytes[chunk]);
            bytes[chunk] += parameter["size"].get<int>();
            EXPECT_EQ(parameter["default"].get<std::string>().size(),
                      2 * parameter["size"].get<std::size_t>());
            EXPECT_LE(bytes[chunk], listed["chunkCapacity"].get<int>());
        }
        EXPECT_EQ(bytes.size(), listed["chunkCount"]);
    }
}

TEST_F(Catalogue, AParameterHasItsAttributesAndItsWholeDefault) {
    const Json listed = engine(firstEngine);
    const auto& parameters = listed["parameters"];
    const auto found =
        std::ranges::find_if(parameters, [](const Json& p) { return p["module"] == 5 && p["id"] == 13; });
    ASSERT_NE(found, parameters.end());
    EXPECT_EQ((*found)["size"], 2052);
    EXPECT_EQ((*found)["priority"], 150);
    EXPECT_EQ((*found)["policy"], 0);
    EXPECT_EQ((*found)["category"], 0);
    EXPECT_EQ((*found)["fields"], "word, 2048 bytes, word");
    EXPECT_EQ((*found)["default"], "0002" + std::string(4100, '0'));
}

TEST_F(Catalogue, TheTextCountsLongRunsOfZeros) {
    const std::string text = catalogue({"--engine", thirdEngine});
    EXPECT_NE(text.find("word, 2048 bytes          0002 00*2048\n"), std::string::npos) << text;
    EXPECT_NE(text.find("44 floats                 00*176\n"), std::string::npos);
    EXPECT_NE(text.find("0000803f\n"), std::string::npos);
    EXPECT_NE(text.find("0 bytes                   -\n"), std::string::npos);
    EXPECT_EQ(text.find("0000000000000000"), std::string::npos);
}

TEST_F(Catalogue, AnEngineIsFoundInAnySpellingOfItsGuid) {
    const std::string text = catalogue({"--engine", thirdEngine});
    EXPECT_EQ(catalogue({"--engine", "C9F475BC13E46150AE88790995AFC7C1"}), text);
}

TEST_F(Catalogue, AnUnknownEngineIsRefusedWithThoseThereAre) {
    for (const char* const id : {"{00000000-0000-0000-0000-000000000000}", "", "third"}) {
        EXPECT_TRUE(failedWith(runTool({"catalogue", "--engine", id}),
                               {"--engine", firstEngine, secondEngine, thirdEngine, id}))
            << id;
    }
}

}  // namespace
}  // namespace korva::test
