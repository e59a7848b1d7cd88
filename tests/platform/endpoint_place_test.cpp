#include "platform/endpoint_place.h"

#include <gtest/gtest.h>

#include <string>

namespace korva::platform {
namespace {

constexpr GUID someGuid = {0x6DCC1AC8, 0x4A3C, 0x4A98, {0xA3, 0xA7, 0xF9, 0x67, 0x12, 0x7D, 0x57, 0x63}};
const std::string guid = "{6dcc1ac8-4a3c-4a98-a3a7-f967127d5763}";
const std::string shouted = "{6DCC1AC8-4A3C-4A98-A3A7-F967127D5763}";

TEST(EndpointPlace, TheIdentifierTellsTheFlowAndTheGuid) {
    EXPECT_EQ(endpointIdOf({eRender, someGuid}), "{0.0.0.00000000}." + guid);
    EXPECT_EQ(endpointIdOf({eCapture, someGuid}), "{0.0.1.00000000}." + guid);
}

TEST(EndpointPlace, TheIdentifierLeadsBack) {
    for (const EDataFlow flow : {eRender, eCapture}) {
        const EndpointPlace place{flow, someGuid};
        EXPECT_EQ(endpointPlaceOf(endpointIdOf(place)), place);
    }
}

TEST(EndpointPlace, CaseMakesNoDifference) {
    EXPECT_EQ(endpointPlaceOf("{0.0.1.00000000}." + shouted), (EndpointPlace{eCapture, someGuid}));
    EXPECT_EQ(endpointPlaceOf(eRender, shouted), (EndpointPlace{eRender, someGuid}));
}

TEST(EndpointPlace, AGuidOfZerosIsOneLikeOthers) {
    const std::string zeros = "{00000000-0000-0000-0000-000000000000}";
    EXPECT_EQ(endpointPlaceOf("{0.0.0.00000000}." + zeros), (EndpointPlace{eRender, GUID{}}));
}

TEST(EndpointPlace, AnythingElseIsNoIdentifier) {
    const std::string render = "{0.0.0.00000000}.";
    for (const std::string& text :
         {std::string(), guid, render, "{0.0.2.00000000}." + guid, render + guid + " ", " " + render + guid,
          render + guid.substr(1), render + "{6dcc1ac84a3c4a98a3a7f967127d5763}", render + guid + guid,
          render + "{6dcc1ac8-4a3c-4a98-a3a7-f967127d576g}", render + "speakers", render + "\\" + guid,
          "{0.0.0.00000000}" + guid, render + std::string("\0", 1) + guid}) {
        EXPECT_EQ(endpointPlaceOf(text), std::nullopt) << text;
    }
}

TEST(EndpointPlace, TheKeyIsWhereTheSystemHasIt) {
    const std::string audio = "Software\\Microsoft\\Windows\\CurrentVersion\\MMDevices\\Audio";
    EXPECT_EQ(endpointsPath(), audio);
    EXPECT_EQ(endpointsPath(eRender), audio + "\\Render");
    EXPECT_EQ(endpointsPath(eCapture), audio + "\\Capture");
    EXPECT_EQ(endpointPath({eCapture, someGuid}), audio + "\\Capture\\" + guid);
}

}  // namespace
}  // namespace korva::platform
