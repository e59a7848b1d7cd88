#include "korva/progress_bar.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

namespace korva::tool {
namespace {

using namespace std::chrono_literals;

/// A bar that draws into memory, at a time that the test sets.
class ProgressBarTest : public testing::Test {
protected:
    ~ProgressBarTest() override {
        std::fclose(terminal);
        std::free(text);
    }
    [[nodiscard]] std::string drawn() const {
        std::fflush(terminal);
        return {text, size};
    }
    [[nodiscard]] ProgressBar::Now clock() {
        return [this] { return ProgressBar::Clock::time_point(time); };
    }

    std::chrono::milliseconds time{0};
    char* text = nullptr;
    std::size_t size = 0;
    std::FILE* terminal = open_memstream(&text, &size);
};

TEST_F(ProgressBarTest, IsNotSeenBeforeASecond) {
    ProgressBar bar(terminal, 100, clock());
    time = 999ms;
    bar.update(50);
    bar.finish();
    EXPECT_EQ(drawn(), "");
}

TEST_F(ProgressBarTest, ShowsThePartThatIsDone) {
    ProgressBar bar(terminal, 200, clock());
    time = 1000ms;
    bar.update(50);
    EXPECT_EQ(drawn(), "\r[##########                              ]  25 %");
}

TEST_F(ProgressBarTest, IsRenewedTenTimesASecond) {
    ProgressBar bar(terminal, 100, clock());
    time = 1000ms;
    bar.update(10);
    const std::string first = drawn();
    time = 1099ms;
    bar.update(20);
    EXPECT_EQ(drawn(), first);
    time = 1100ms;
    bar.update(30);
    EXPECT_NE(drawn().find(" 30 %"), std::string::npos);
}

TEST_F(ProgressBarTest, IsClearedAtTheEndAndNotDrawnAgain) {
    ProgressBar bar(terminal, 100, clock());
    time = 1000ms;
    bar.update(100);
    bar.finish();
    const std::string cleared = drawn();
    EXPECT_TRUE(cleared.ends_with("100 %\r\x1b[K"));
    time = 5000ms;
    bar.update(100);
    bar.finish();
    EXPECT_EQ(drawn(), cleared);
}

TEST_F(ProgressBarTest, IsClearedWhenTheWorkFails) {
    {
        ProgressBar bar(terminal, 100, clock());
        time = 1000ms;
        bar.update(10);
    }
    EXPECT_TRUE(drawn().ends_with("\r\x1b[K"));
}

TEST_F(ProgressBarTest, WithoutALengthIsNeverDrawn) {
    ProgressBar bar(terminal, std::nullopt, clock());
    time = 9000ms;
    bar.update(10);
    bar.finish();
    EXPECT_EQ(drawn(), "");
}

TEST_F(ProgressBarTest, WithoutATerminalDoesNothing) {
    ProgressBar bar(nullptr, 100, clock());
    time = 9000ms;
    bar.update(10);
    bar.finish();
    EXPECT_EQ(drawn(), "");
}

}  // namespace
}  // namespace korva::tool
