#include "korva/monitor/table.h"

#include <gtest/gtest.h>

#include "korva/monitor/cell_text.h"

namespace korva::tool {
namespace {

InstanceView viewNamed(const std::string& name) {
    InstanceView view;
    view.name = name;
    view.effect.value = "SFX";
    view.endpointName = "Loudspeakers of the living room, left and right";
    view.load.value = 34;
    view.meters[1].value = {{0.5F}};
    return view;
}

TEST(MonitorTable, HasALineOfHeadingsAndOneForEachInstance) {
    EXPECT_EQ(tableOf({}, anyWidth).size(), 1U);
    const std::vector<InstanceView> views = {viewNamed("{a}"), viewNamed("{b}")};
    const auto lines = tableOf(views, anyWidth);
    ASSERT_EQ(lines.size(), 3U);
    EXPECT_TRUE(lines[1].starts_with("{a}       SFX     Loudspeakers of the living room, left and right  "));
}

TEST(MonitorTable, NeverGetsWiderThanAllowed) {
    const std::vector<InstanceView> views = {viewNamed("{6dcc1ac8-4a3c-4a98-a3a7-000000000001}")};
    for (std::size_t width = 0; width < 250; ++width) {
        for (const std::string& line : tableOf(views, width)) {
            EXPECT_LE(cellCount(line), width);
        }
    }
}

TEST(MonitorTable, KeepsWhatTellsMostWhereItIsNarrow) {
    const std::vector<InstanceView> views = {viewNamed("{6dcc1ac8-4a3c-4a98-a3a7-000000000001}")};
    EXPECT_EQ(tableOf(views, 40), (std::vector<std::string>{"INSTANCE  EFFECT   LOAD  OUT dB",
                                                            "6dcc1ac8  SFX     3.4 %    -6.0"}));
    EXPECT_EQ(tableOf(views, 8), (std::vector<std::string>{"INSTANCE", "6dcc1ac8"}));
    EXPECT_EQ(tableOf(views, 4), (std::vector<std::string>{"INST", "6dcc"}));
}

TEST(MonitorTable, TellsWhatIsUnknownFromWhatIsMalformed) {
    InstanceView view;
    view.name = "{a}";
    view.load.isMalformed = true;
    const std::vector<InstanceView> views = {view};
    const std::string line = tableOf(views, anyWidth)[1];
    EXPECT_NE(line.find("?"), std::string::npos);
    EXPECT_EQ(line.find("?"), line.rfind("?"));
    EXPECT_NE(line.find("- ch -"), std::string::npos);
}

TEST(MonitorTable, OfLevelsHasEachPlane) {
    const auto lines = levelTableOf(viewNamed("{a}"));
    ASSERT_EQ(lines.size(), 9U);
    EXPECT_EQ(lines[0], "dB                   input      output   DSP input  DSP output");
    EXPECT_EQ(lines[1], "front left               -        -6.0           -           -");
    EXPECT_EQ(lines[8], "side right               -        -inf           -           -");
}

}  // namespace
}  // namespace korva::tool
