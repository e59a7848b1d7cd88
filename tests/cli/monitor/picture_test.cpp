#include "korva/monitor/picture.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace korva::tool {
namespace {

std::string textOf(const PictureLine& line) {
    std::string text;
    for (const StyledText& part : line) {
        text += part.text;
    }
    return text;
}

std::string textOf(const Picture& picture) {
    std::string text;
    for (const PictureLine& line : picture) {
        text += textOf(line) + "\n";
    }
    return text;
}

class MonitorPicture : public testing::Test {
protected:
    MonitorPicture() {
        for (int i = 0; i < 12; ++i) {
            InstanceView view;
            view.name = "{" + std::string(8, static_cast<char>('a' + i)) + "-4a3c-4a98-a3a7-000000000001}";
            view.input.mask.value = 0x3;
            view.meters[0].value = {{0.5F, 0.001F}};
            views.push_back(view);
        }
        scene.title = "title";
        scene.instances = views;
        scene.heldPeaks.fill(-6.0F);
    }

    std::vector<InstanceView> views;
    Scene scene;
};

TEST_F(MonitorPicture, FillsTheScreenAndNoMoreAtAnySize) {
    for (std::size_t rows = 1; rows < 70; rows += 3) {
        for (std::size_t columns = 1; columns < 150; columns += 7) {
            const Picture picture = pictureOf(scene, {columns, rows});
            EXPECT_EQ(picture.size(), rows);
            for (const PictureLine& line : picture) {
                EXPECT_LE(cellCount(line), columns);
            }
        }
    }
}

TEST_F(MonitorPicture, KeepsTheChosenInstanceInSight) {
    for (std::size_t selected = 0; selected < views.size(); ++selected) {
        scene.selected = selected;
        const Picture picture = pictureOf(scene, {80, 12});
        const std::string shown = views[selected].name.substr(1, 8);
        EXPECT_TRUE(std::ranges::any_of(picture, [&](const PictureLine& line) {
            return textOf(line).starts_with(shown) && line.front().style == Style::selected;
        })) << textOf(picture);
    }
}

TEST_F(MonitorPicture, ShowsTheLevelsOfTheSpeakersThatThereAre) {
    const std::string text = textOf(pictureOf(scene, {80, 30}));
    EXPECT_NE(text.find("front left      -6.0 "), std::string::npos) << text;
    EXPECT_NE(text.find("front right    -60.0 ·"), std::string::npos) << text;
    EXPECT_EQ(text.find("front center"), std::string::npos);
    scene.meterSet = MeterSet::dspOutput;
    EXPECT_NE(textOf(pictureOf(scene, {80, 30})).find("side right         - "), std::string::npos);
}

TEST_F(MonitorPicture, KeepsTheLevelsWhereTheScreenIsLow) {
    scene.instances = std::span(views).first(1);
    const std::string text = textOf(pictureOf(scene, {40, 10}));
    EXPECT_NE(text.find("FL   -6.0 █"), std::string::npos) << text;
    EXPECT_NE(text.find("FR  -60.0 "), std::string::npos) << text;
}

TEST_F(MonitorPicture, ColoursEachPartOfABarByItsLevel) {
    views[0].meters[0].value = {{1.0F}};
    scene.heldPeaks.fill(0.0F);
    const Picture picture = pictureOf(scene, {80, 30});
    const auto line = std::ranges::find_if(
        picture, [](const PictureLine& one) { return textOf(one).starts_with("front left"); });
    ASSERT_NE(line, picture.end());
    std::vector<Style> styles;
    for (const StyledText& part : *line) {
        if (part.text.starts_with("█")) {
            styles.push_back(part.style);
        }
    }
    EXPECT_EQ(styles, (std::vector<Style>{Style::quiet, Style::loud, Style::over}));
}

TEST_F(MonitorPicture, MarksTheHeldPeakBeyondTheLevel) {
    const std::string text = textOf(pictureOf(scene, {80, 30}));
    const auto line = text.substr(text.find("front right"));
    EXPECT_LT(line.find("│"), line.find("\n"));
}

TEST_F(MonitorPicture, HasOnlyAsciiWhereThereIsNoMore) {
    scene.unicode = false;
    scene.loadHistory = "0123";
    views[0].endpointName = "Müller";
    const std::string text = textOf(pictureOf(scene, {120, 40}));
    EXPECT_TRUE(std::ranges::all_of(text, [](char c) { return static_cast<unsigned char>(c) < 0x80; }));
    EXPECT_NE(text.find("M?ller"), std::string::npos);
}

TEST_F(MonitorPicture, SaysThatThereIsNoInstanceAndWhatIsWrong) {
    scene.instances = {};
    scene.notice = "can't ask";
    const std::string text = textOf(pictureOf(scene, {80, 5}));
    EXPECT_EQ(text, "title\ncan't ask\nno live instance\n\nup/down: choose  tab, 1-4: levels  q: quit\n");
}

}  // namespace
}  // namespace korva::tool
