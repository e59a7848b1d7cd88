#include "korva/preset/preset_text.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <string>
#include <vector>

#include "platform/property_key.h"
#include "tests/cli/preset_tool_test.h"

namespace korva::tool {
namespace {

using test::presetJson;
using Bytes = std::vector<std::byte>;

std::string third(const std::string& parameters) {
    return presetJson(test::thirdEngine, parameters);
}

Bytes bytes(std::initializer_list<unsigned> values) {
    Bytes result;
    std::ranges::transform(values, std::back_inserter(result),
                           [](unsigned value) { return static_cast<std::byte>(value); });
    return result;
}

std::vector<std::string> faultsOf(const std::string& text) {
    const ReadPreset read = readPresetText(text);
    EXPECT_EQ(read.preset.has_value(), read.faults.empty());
    std::vector<std::string> faults;
    for (const TextFault& fault : read.faults) {
        faults.push_back(faultText("p.json", fault));
    }
    return faults;
}

using Faults = std::vector<std::string>;

/// The only fault of a third engine's preset with these parameters.
std::string faultOf(const std::string& parameters) {
    const Faults faults = faultsOf(third(parameters));
    EXPECT_EQ(faults.size(), 1U) << parameters;
    return faults.empty() ? "" : faults.front();
}

/// The bytes that a preset's only parameter is set to.
Bytes bytesOf(const std::string& engine, const std::string& parameter) {
    const ReadPreset read = readPresetText(presetJson(engine, parameter));
    EXPECT_TRUE(read.preset) << parameter;
    if (!read.preset || read.preset->parameters.size() != 1) {
        return {};
    }
    return read.preset->parameters.begin()->second;
}

Bytes float8(const std::string& value) {
    return bytesOf(test::thirdEngine, R"({"module": -1, "id": -22, "floats": [)" + value + "]}");
}

/// The text of a third engine's preset whose parameter -22, one float, has these bytes.
std::string textWith(const Bytes& payload) {
    Preset preset{.engineId = platform::GuidFromText(test::thirdEngine)};
    preset.parameters[{-1, -22}] = payload;
    return presetText(preset);
}

TEST(PresetText, ReadsAllOfAPreset) {
    const ReadPreset read = readPresetText(
        R"({"engine": "{C9F475BC-13E4-6150-AE88-790995AFC7C1}", "presetVersion": 4294967295,
            "hardware": true, "parameters": [{"module": -1, "id": -22, "floats": [0.5]},
            {"module": 0, "id": -22, "bytes": ""}]})");
    EXPECT_FALSE(read.preset) << "module 0 has no -22";
    const ReadPreset right = readPresetText(
        R"({"engine": "{C9F475BC-13E4-6150-AE88-790995AFC7C1}", "presetVersion": 4294967295,
            "hardware": true, "parameters": [{"module": 0, "id": 8, "bools": [true]},
            {"module": -1, "id": -22, "floats": [0.5]}]})");
    ASSERT_TRUE(right.preset);
    EXPECT_EQ(platform::guidText(right.preset->engineId), test::thirdEngine);
    EXPECT_EQ(right.preset->presetVersion, 4294967295);
    EXPECT_TRUE(right.preset->hardware);
    const std::map<ParameterPlace, Bytes> expected = {{{-1, -22}, bytes({0, 0, 0, 0x3F})},
                                                      {{0, 8}, bytes({1})}};
    EXPECT_EQ(right.preset->parameters, expected);
}

TEST(PresetText, EachFormSetsTheBytesOfItsFields) {
    const std::string base = R"({"module": -1, "id": )";
    EXPECT_EQ(bytesOf(test::thirdEngine, base + R"(-40, "uints": [4294967295]})"),
              bytes({0xFF, 0xFF, 0xFF, 0xFF}));
    EXPECT_EQ(bytesOf(test::thirdEngine, base + R"(-25, "ints": [-2]})"), bytes({0xFE, 0xFF, 0xFF, 0xFF}));
    EXPECT_EQ(bytesOf(test::thirdEngine, base + R"(-39, "bools": [true]})"), bytes({1}));
    EXPECT_EQ(bytesOf(test::thirdEngine, base + R"(-13, "fields": [true, 258]})"), bytes({1, 2, 1}));
    EXPECT_EQ(bytesOf(test::thirdEngine, base + R"(-23, "fields": [false, 1, -2.0]})"),
              bytes({0, 0, 0, 0x80, 0x3F, 0, 0, 0, 0xC0}));
    EXPECT_EQ(bytesOf(test::thirdEngine, base + R"(-26, "fields": [""]})"), bytes({}));
    EXPECT_EQ(bytesOf(test::thirdEngine, base + R"(-26, "bytes": "00fFA0"})"), bytes({0, 0xFF, 0xA0}));
    const std::string word = R"({"module": 5, "id": 80, "words": [)";
    EXPECT_EQ(bytesOf(test::firstEngine, word + "65535]}"), bytes({0xFF, 0xFF}));
    EXPECT_EQ(bytesOf(test::firstEngine, word + "-32768]}"), bytes({0, 0x80}));
    const std::string byte = R"({"module": 5, "id": 129, "fields": [)";
    EXPECT_EQ(bytesOf(test::firstEngine, byte + "255]}"), bytes({0xFF}));
    EXPECT_EQ(bytesOf(test::firstEngine, byte + "-128]}"), bytes({0x80}));
}

TEST(PresetText, ABlockOfBytesAmongFieldsIsHexadecimal) {
    const Bytes set = bytesOf(test::thirdEngine, R"({"module": -1, "id": -16, "fields": [1, ")" +
                                                     std::string(4094, '0') + R"(7f"]})");
    ASSERT_EQ(set.size(), 2050U);
    EXPECT_EQ(set[0], std::byte{1});
    EXPECT_EQ(set[2049], std::byte{0x7F});
}

TEST(PresetText, FloatsTakeWholeNumbersAndKeepTheSignOfZero) {
    EXPECT_EQ(float8("1"), bytes({0, 0, 0x80, 0x3F}));
    EXPECT_EQ(float8("-0"), bytes({0, 0, 0, 0x80}));
    EXPECT_EQ(float8("-0.0"), bytes({0, 0, 0, 0x80}));
    EXPECT_EQ(float8("0"), bytes({0, 0, 0, 0}));
    EXPECT_EQ(float8("18446744073709551615"), bytes({0, 0, 0x80, 0x5F}));
    EXPECT_EQ(float8("1e-45"), bytes({1, 0, 0, 0}));
    EXPECT_EQ(float8("3.4028234663852886e38"), bytes({0xFF, 0xFF, 0x7F, 0x7F}));
}

TEST(PresetText, FloatsOutsideTheirRangeAreRefused) {
    const std::string expected = "expected a number in the range of a 32-bit float, got ";
    for (const char* const number : {"1e+39", "-1e+300", "3.5e+38"}) {
        EXPECT_EQ(faultOf(R"({"module": -1, "id": -22, "floats": [)" + std::string(number) + "]}"),
                  "p.json: parameters[0].floats[0]: " + expected + number);
    }
}

TEST(PresetText, ANumberPastAllFloatsIsAFaultOfTheTextWithItsPlace) {
    const Faults faults = faultsOf("{\"engine\":\n  1e999}");
    ASSERT_EQ(faults.size(), 1U);
    EXPECT_EQ(faults[0], "p.json:2:7: number overflow parsing '1e999'");
}

TEST(PresetText, WholeNumbersOutsideTheirRangeAndFractionsAreRefused) {
    const auto uints = [](const std::string& value) {
        return faultOf(R"({"module": -1, "id": -40, "uints": [)" + value + "]}");
    };
    const std::string expected =
        "p.json: parameters[0].uints[0]: expected a whole number from 0 to 4294967295, got ";
    EXPECT_EQ(uints("4294967296"), expected + "4294967296");
    EXPECT_EQ(uints("-1"), expected + "-1");
    EXPECT_EQ(uints("1.5"), expected + "1.5");
    EXPECT_EQ(uints("true"), expected + "true");
    EXPECT_EQ(uints("\"1\""), expected + "the text '1'");
    EXPECT_EQ(uints("99999999999999999999"), expected + "1e+20");
    EXPECT_NE(uints("1.0").find(expected), std::string::npos);
    EXPECT_NE(faultOf(R"({"module": -1, "id": -25, "ints": [2147483648]})").find("-2147483648 to 2147483647"),
              std::string::npos);
    EXPECT_NE(faultOf(R"({"module": -1, "id": -13, "fields": [true, 65536]})").find("-32768 to 65535"),
              std::string::npos);
    EXPECT_EQ(faultOf(R"({"module": -1, "id": -39, "bools": [1]})"),
              "p.json: parameters[0].bools[0]: expected true or false, got 1");
}

TEST(PresetText, TheNumberOfValuesIsThatOfTheFields) {
    EXPECT_EQ(faultOf(R"({"module": 0, "id": 3, "floats": [0,0,0,0,0,0,0,0,0,0,0]})"),
              "p.json: parameters[0].floats: expected 12 values, got 11");
    EXPECT_EQ(faultOf(R"({"module": 0, "id": 1, "floats": []})"),
              "p.json: parameters[0].floats: expected 1 value, got 0");
    EXPECT_EQ(faultOf(R"({"module": 0, "id": 1, "floats": 1})"),
              "p.json: parameters[0].floats: expected an array, got 1");
}

TEST(PresetText, TheFormHasToSuitTheFields) {
    EXPECT_EQ(faultOf(R"({"module": -1, "id": -23, "floats": [0, 0, 0]})"),
              "p.json: parameters[0].floats: the parameter isn't made of floats but of bool, 2 floats; use "
              "'fields'");
    EXPECT_EQ(faultOf(R"({"module": -1, "id": -40, "ints": [0]})"),
              "p.json: parameters[0].ints: the parameter isn't made of ints but of uint; use 'uints'");
}

TEST(PresetText, HexadecimalDigitsComeInPairsUpToTheLargestSize) {
    const auto hex = [](const std::string& digits) {
        return R"({"module": -1, "id": -26, "bytes": ")" + digits + "\"}";
    };
    EXPECT_EQ(faultOf(hex("123")),
              "p.json: parameters[0].bytes: expected two hexadecimal digits a byte, got 3 digits");
    EXPECT_EQ(
        faultOf(hex("12 4")),
        "p.json: parameters[0].bytes: expected hexadecimal digits, got another character at position 3");
    EXPECT_EQ(faultOf(R"({"module": -1, "id": -26, "bytes": 12})"),
              "p.json: parameters[0].bytes: expected hexadecimal digits in quotes, got 12");
    EXPECT_EQ(bytesOf(test::thirdEngine, hex(std::string(2 * 65535, 'a'))), Bytes(65535, std::byte{0xAA}));
    EXPECT_EQ(faultOf(hex(std::string(2 * 65536, 'a'))),
              "p.json: parameters[0].bytes: expected 65535 bytes at most, got 65536");
    EXPECT_EQ(faultOf(R"({"module": -1, "id": -16, "fields": [0, "00"]})"),
              "p.json: parameters[0].fields[1]: expected 2048 bytes, got 1");
}

TEST(PresetText, UnknownPlacesAreNamedWithThoseThereAre) {
    EXPECT_EQ(faultOf(R"({"module": 1, "id": 0, "bools": [true]})"),
              "p.json: parameters[0].module: the engine has modules -1 to 0, not 1");
    EXPECT_EQ(faultOf(R"({"module": -2, "id": 0, "bools": [true]})"),
              "p.json: parameters[0].module: the engine has modules -1 to 0, not -2");
    EXPECT_EQ(faultOf(R"({"module": -1, "id": 0, "bools": [true]})"),
              "p.json: parameters[0].id: module -1 has parameters -40 to -1, not 0");
    const Faults faults = faultsOf(presetJson("{00000000-0000-0000-0000-000000000001}", ""));
    ASSERT_EQ(faults.size(), 1U);
    EXPECT_EQ(faults[0], "p.json: engine: expected a known engine, " + std::string(test::firstEngine) + ", " +
                             test::secondEngine + " or " + test::thirdEngine +
                             "; got the text '{00000000-0000-0000-0000-000000000001}'");
}

TEST(PresetText, AParameterIsSetOnce) {
    EXPECT_EQ(faultOf(R"({"module": 0, "id": 8, "bools": [true]}, {"module": -1, "id": -1, "bools": [true]},
                         {"module": 0, "id": 8, "bytes": ""})"),
              "p.json: parameters[2]: module 0, id 8 is set by parameters[0] already");
}

TEST(PresetText, AParameterHasOneValue) {
    const std::string forms = "expected one of floats, uints, ints, words, bools, fields and bytes, got ";
    EXPECT_EQ(faultOf(R"({"module": 0, "id": 8})"), "p.json: parameters[0]: " + forms + "none");
    EXPECT_EQ(faultOf(R"({"module": 0, "id": 8, "bools": [true], "bytes": "01"})"),
              "p.json: parameters[0]: " + forms + "bools and bytes");
}

TEST(PresetText, AKeyThatIsMissingUnknownOrTwiceIsNamed) {
    EXPECT_EQ(faultsOf("{}"),
              (Faults{"p.json: the key 'engine' is missing", "p.json: the key 'presetVersion' is missing",
                      "p.json: the key 'hardware' is missing", "p.json: the key 'parameters' is missing"}));
    EXPECT_EQ(faultOf(R"({"module": 0, "bools": [true]})"), "p.json: parameters[0]: the key 'id' is missing");
    EXPECT_EQ(
        faultOf(R"({"module": 0, "id": 8, "bools": [true], "gain": 1})"),
        "p.json: parameters[0]: unknown key 'gain'; there are module, id, floats, uints, ints, words, bools, "
        "fields and bytes");
    EXPECT_EQ(faultOf(R"({"module": 0, "id": 8, "id": 7, "bools": [true]})"),
              "p.json: parameters[0]: the key 'id' appears twice");
    const Faults top =
        faultsOf(R"({"engine": ")" + std::string(test::thirdEngine) +
                 R"(", "presetVersion": 1, "presetVersion": 1, "hardware": false, "parameters": []})");
    EXPECT_EQ(top, Faults{"p.json: the key 'presetVersion' appears twice"});
}

TEST(PresetText, WrongTypesAreNamedWithWhatWasExpected) {
    EXPECT_EQ(faultsOf("[]"), Faults{"p.json: expected an object, got an array"});
    EXPECT_EQ(faultsOf("null"), Faults{"p.json: expected an object, got null"});
    EXPECT_EQ(faultOf("7"), "p.json: parameters[0]: expected an object, got 7");
    const Faults faults = faultsOf(R"({"engine": 1, "presetVersion": 0, "hardware": 0, "parameters": {}})");
    ASSERT_EQ(faults.size(), 4U);
    EXPECT_NE(faults[0].find("p.json: engine: expected a known engine"), std::string::npos);
    EXPECT_EQ(faults[1], "p.json: presetVersion: expected a whole number from 1 to 4294967295, got 0");
    EXPECT_EQ(faults[2], "p.json: hardware: expected true or false, got 0");
    EXPECT_EQ(faults[3], "p.json: parameters: expected an array, got an object");
}

TEST(PresetText, AllFaultsAreFoundInTheirOrder) {
    const Faults faults = faultsOf(R"({"parameters": [
        {"module": 0, "id": 3, "floats": ["x", 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, true]}, 5,
        {"module": 9, "id": 9, "id": 8}],
        "hardware": 1, "presetVersion": 0, "engine": "{c9f475bc-13e4-6150-ae88-790995afc7c1}"})");
    const std::vector<std::string> beginnings = {"parameters[2]: the key 'id' appears twice",
                                                 "presetVersion: ",
                                                 "hardware: ",
                                                 "parameters[0].floats[0]: ",
                                                 "parameters[0].floats[11]: ",
                                                 "parameters[1]: expected an object",
                                                 "parameters[2].module: ",
                                                 "parameters[2]: expected one of"};
    ASSERT_EQ(faults.size(), beginnings.size());
    for (std::size_t i = 0; i < faults.size(); ++i) {
        EXPECT_TRUE(faults[i].starts_with("p.json: " + beginnings[i])) << faults[i];
    }
}

TEST(PresetText, WhatIsNoJsonIsAFaultWithLineAndColumn) {
    EXPECT_NE(faultsOf("").front().find("p.json:1:1: syntax error"), std::string::npos);
    EXPECT_NE(faultsOf("{\n  \"engine\" 1}").front().find("p.json:2:12: syntax error"), std::string::npos);
    // Two characters of three bytes each before the fault.
    EXPECT_NE(faultsOf("[\"\xE2\x82\xAC\xE2\x82\xAC\" x").front().find("p.json:1:7: syntax error"),
              std::string::npos);
    EXPECT_EQ(faultsOf(third("") + "x").size(), 1U);
    EXPECT_EQ(faultsOf(third("1,")).size(), 1U);
    for (const std::string text :
         {"\xFF\xFE{\0}\0", "\"\xC0\x80\"", "[\"\xED\xA0\x80\"]", "[nan]", "[01]", "{'a':1}"}) {
        const Faults faults = faultsOf(text);
        ASSERT_EQ(faults.size(), 1U);
        EXPECT_NE(faults[0].find("syntax error"), std::string::npos) << faults[0];
    }
}

TEST(PresetText, AByteOrderMarkIsTaken) {
    EXPECT_EQ(faultsOf("\xEF\xBB\xBF" + third("")), Faults{});
}

TEST(PresetText, DeepNestingIsAFaultAndNotACrash) {
    const Faults arrays = faultsOf(std::string(1'000'000, '['));
    ASSERT_EQ(arrays.size(), 1U);
    EXPECT_NE(arrays[0].find("nested deeper than 16 levels"), std::string::npos);
    std::string objects;
    for (int i = 0; i < 100'000; ++i) {
        objects += R"({"a":)";
    }
    EXPECT_EQ(faultsOf(objects),
              Faults{"p.json: a.a.a.a.a.a.a.a.a.a.a.a.a.a.a: nested deeper than 16 levels"});
}

TEST(PresetText, MoreValuesThanAnyPresetHasAreAFaultAndDoNotFillTheMemory) {
    std::string zeros = "[0";
    for (std::size_t i = 2; i < maxJsonValues; ++i) {
        zeros += ",0";
    }
    EXPECT_EQ(faultsOf(zeros + "]"), Faults{"p.json: expected an object, got an array"});
    for (const char* const oneMore : {",0]", ",[]]", ",{}]"}) {
        EXPECT_EQ(faultsOf(zeros + oneMore), Faults{"p.json: more than 300000 values in all"}) << oneMore;
    }
}

TEST(PresetText, ManyKeysTakeTheTimeOfFew) {
    std::string text = "{";
    for (int i = 0; i < 200'000; ++i) {
        text += "\"" + std::to_string(i) + "\":0,";
    }
    // Compared each with each they would take minutes.
    EXPECT_EQ(readPresetText(text + "\"x\":0}").faults.size(), 200'001U + 4);
}

TEST(PresetText, LongTextsOfTheUserAreShortenedBetweenCharacters) {
    std::string text;
    for (int i = 0; i < 1000; ++i) {
        text += "\xE2\x82\xAC";
    }
    const std::string fault = faultOf("\"" + text + "\"");
    EXPECT_EQ(fault,
              "p.json: parameters[0]: expected an object, got the text '" + text.substr(0, 60) + "...'");
}

TEST(PresetText, WritesAParameterALine) {
    const ReadPreset read = readPresetText(third(
        R"({"module": 0, "id": 8, "bytes": "01"}, {"module": -1, "id": -23, "fields": [true, -0.0, 2]})"));
    ASSERT_TRUE(read.preset);
    EXPECT_EQ(presetText(*read.preset), R"({
  "engine": "{c9f475bc-13e4-6150-ae88-790995afc7c1}",
  "presetVersion": 1,
  "hardware": false,
  "parameters": [
    {"module": -1, "id": -23, "fields": [true, -0.0, 2.0]},
    {"module": 0, "id": 8, "bools": [true]}
  ]
}
)");
}

TEST(PresetText, WritesBytesWhereNumbersDoNotSayThem) {
    EXPECT_NE(textWith(bytes({0, 0, 0xC0, 0x7F})).find(R"("bytes": "0000c07f")"), std::string::npos) << "NaN";
    EXPECT_NE(textWith(bytes({0, 0, 0x80, 0xFF})).find(R"("bytes": "000080ff")"), std::string::npos)
        << "infinity";
    EXPECT_NE(textWith(bytes({1, 2, 3})).find(R"("bytes": "010203")"), std::string::npos) << "size";
    EXPECT_NE(textWith({}).find(R"("bytes": "")"), std::string::npos) << "none";
    Preset preset{.engineId = platform::GuidFromText(test::thirdEngine)};
    preset.parameters[{0, 8}] = bytes({2});
    EXPECT_NE(presetText(preset).find(R"("bytes": "02")"), std::string::npos) << "no bool";
}

TEST(PresetText, EveryKindOfFloatComesBack) {
    std::vector<std::uint32_t> patterns = {0, 1, 0x007FFFFF, 0x00800000, 0x7F7FFFFF, 0x7F800000, 0x7FC00001};
    for (std::uint32_t i = 0; i < 20'000; ++i) {
        patterns.push_back(i * 2654435761U);
    }
    for (const std::uint32_t pattern : patterns) {
        for (const std::uint32_t word : {pattern, pattern | 0x80000000}) {
            const Bytes payload =
                bytes({word & 0xFF, (word >> 8) & 0xFF, (word >> 16) & 0xFF, (word >> 24) & 0xFF});
            const ReadPreset read = readPresetText(textWith(payload));
            ASSERT_TRUE(read.preset) << std::hex << word;
            ASSERT_EQ(read.preset->parameters.at({-1, -22}), payload) << std::hex << word;
        }
    }
}

}  // namespace
}  // namespace korva::tool
