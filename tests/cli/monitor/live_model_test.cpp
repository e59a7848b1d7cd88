#include "korva/monitor/live_model.h"

#include <gtest/gtest.h>

namespace korva::tool {
namespace {

class MonitorModel : public testing::Test {
protected:
    void take(std::initializer_list<const char*> names, float level = 0.0F) {
        Refresh refresh;
        for (const char* const name : names) {
            InstanceView view;
            view.name = name;
            view.meters[0].value = {{level}};
            view.load.value = 1000;
            refresh.instances.push_back(view);
        }
        now += std::chrono::milliseconds(100);
        model.take(std::move(refresh), now);
    }
    [[nodiscard]] std::string screen() const {
        std::string text;
        for (const PictureLine& line : model.picture({100, 40}, "title", "", true)) {
            for (const StyledText& part : line) {
                text += part.style == Style::selected ? "<" + part.text + ">" : part.text;
            }
            text += "\n";
        }
        return text;
    }
    [[nodiscard]] bool shows(const std::string& text) const {
        return screen().find(text) != std::string::npos;
    }

    LiveModel model;
    std::chrono::steady_clock::time_point now{std::chrono::hours(1)};
};

TEST_F(MonitorModel, ChoosesTheFirstAtFirstAndMovesWithinTheList) {
    take({"aaa", "bbb"});
    EXPECT_TRUE(shows("<aaa"));
    model.press(MonitorKey::up);
    EXPECT_TRUE(shows("<aaa"));
    model.press(MonitorKey::down);
    EXPECT_TRUE(shows("<bbb"));
    model.press(MonitorKey::down);
    EXPECT_TRUE(shows("<bbb"));
}

TEST_F(MonitorModel, KeepsTheChosenOneWhenOthersComeAndGo) {
    take({"aaa", "bbb"});
    model.press(MonitorKey::down);
    take({"ccc", "aaa", "bbb"});
    EXPECT_TRUE(shows("<bbb"));
    take({"bbb"});
    EXPECT_TRUE(shows("<bbb"));
}

TEST_F(MonitorModel, ChoosesTheNeighbourOfOneThatEnds) {
    take({"aaa", "bbb", "ccc"});
    model.press(MonitorKey::down);
    take({"aaa", "ccc"});
    EXPECT_TRUE(shows("<ccc"));
    take({"aaa"});
    EXPECT_TRUE(shows("<aaa"));
    take({});
    EXPECT_TRUE(shows("no live instance"));
    model.press(MonitorKey::down);
    take({"ddd"});
    EXPECT_TRUE(shows("<ddd"));
}

TEST_F(MonitorModel, GoesRoundTheMetersAndToEachByItsNumber) {
    take({"aaa"});
    EXPECT_TRUE(shows("< 1 input >"));
    model.press(MonitorKey::nextMeters);
    EXPECT_TRUE(shows("< 2 output >"));
    model.press(MonitorKey::meters4);
    EXPECT_TRUE(shows("< 4 DSP output >"));
    model.press(MonitorKey::nextMeters);
    EXPECT_TRUE(shows("< 1 input >"));
}

TEST_F(MonitorModel, HoldsPeaksAndLoadsOfEachInstance) {
    take({"aaa"}, 1.0F);
    take({"aaa"}, 0.0F);
    EXPECT_TRUE(shows("██"));
    EXPECT_TRUE(shows("│    0.0\n")) << screen();
    take({"bbb"}, 0.0F);
    EXPECT_FALSE(shows("│    0.0\n"));
    EXPECT_FALSE(shows("██"));
}

}  // namespace
}  // namespace korva::tool
