#include "korva/monitor/load_history.h"

#include <gtest/gtest.h>

namespace korva::tool {
namespace {

TEST(LoadHistory, IsEmptyAtFirst) {
    EXPECT_EQ(LoadHistory().text(10, true), "");
}

TEST(LoadHistory, HasAHeightForEachEighthOfTheBuffer) {
    LoadHistory history;
    for (const std::uint32_t load : {0U, 124U, 125U, 500U, 875U, 1000U, 4'294'967'295U}) {
        history.add(load);
    }
    EXPECT_EQ(history.text(10, true), "▁▁▂▅███");
    EXPECT_EQ(history.text(10, false), "0014777");
}

TEST(LoadHistory, ShowsTheNewestThatFit) {
    LoadHistory history;
    for (std::uint32_t i = 0; i < 100; ++i) {
        history.add(i < 98 ? 0 : 1000);
    }
    EXPECT_EQ(history.text(3, false), "077");
    EXPECT_EQ(history.text(1000, false).size(), LoadHistory::capacity);
}

}  // namespace
}  // namespace korva::tool
