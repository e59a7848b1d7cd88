#include "korva/process/truncation.h"

#include <gtest/gtest.h>

#include <string>

namespace korva::tool {
namespace {

/// A WAV file's log with these lengths.
std::string wavLog(const std::string& riff, const std::string& data) {
    return "File : in.wav\nLength : 100044\nRIFF : " + riff + "\nWAVE\nfmt  : 16\n  Channels      : 2\n" +
           "  Block Align   : 4\n  Bit Width     : 16\ndata : " + data + "\nEnd\n";
}

TEST(FindShortfall, ACompleteFileLacksNothing) {
    EXPECT_FALSE(findShortfall(wavLog("100036", "100000"), 25000));
    EXPECT_FALSE(findShortfall("", 25000));
}

TEST(FindShortfall, ShortSoundIsToldInBytes) {
    const auto shortfall =
        findShortfall(wavLog("142120 (should be 100036)", "142084 (should be 100000)"), 25000);
    ASSERT_TRUE(shortfall);
    EXPECT_EQ(shortfall->announcedBytes, 142084u);
    EXPECT_EQ(shortfall->presentBytes, 100000u);
}

TEST(FindShortfall, WhatIsMissingBehindTheSoundDoesNotMatter) {
    EXPECT_FALSE(findShortfall(wavLog("142120 (should be 100036)", "100000"), 25000));
}

TEST(FindShortfall, AnnouncingLessThanThereIsLacksNothing) {
    EXPECT_FALSE(findShortfall(wavLog("100036", "100000 (should be 142084)"), 25000));
}

TEST(FindShortfall, APartOfAFrameDoesNotMatter) {
    EXPECT_FALSE(findShortfall(wavLog("100036", "100003 (should be 100001)"), 25000));
    EXPECT_TRUE(findShortfall(wavLog("100036", "100004 (should be 100003)"), 25000));
}

TEST(FindShortfall, LengthsThatStandForTheEndAnnounceNothing) {
    for (const char* const length :
         {"0", "2147483647", "2147483648", "2147479552", "4294967295", "4294967259", "4294963200"}) {
        EXPECT_FALSE(findShortfall(wavLog(length, std::string(length) + " (should be 100000)"), 25000))
            << length;
    }
}

TEST(FindShortfall, LengthsBetweenThoseAreTakenAsTheyAre) {
    for (const char* const length : {"2147400000", "2147483652", "3000000000", "4294900000"}) {
        EXPECT_TRUE(findShortfall(wavLog("100036", std::string(length) + " (should be 100000)"), 25000))
            << length;
    }
}

TEST(FindShortfall, ReadsTheNamesOfAiffAndAu) {
    EXPECT_TRUE(
        findShortfall("FORM : 384046 (should be 256029)\n SSND : 384008 (should be 255991)\n", 63995));
    EXPECT_FALSE(findShortfall("FORM : 384046 (should be 384040)\n SSND : 384008\n", 96000));
    EXPECT_TRUE(findShortfall("  Data Size   : 768000 (should be 511993)\n", 63999));
}

TEST(FindShortfall, ReckonsWhatTheFramesOfW64AndRf64TakeUp) {
    const std::string w64 = "riff : 768136 (should be 512091)\nwave\n  Block Align   : 8\ndata : 768024\n";
    ASSERT_TRUE(findShortfall(w64, 63994));
    EXPECT_EQ(findShortfall(w64, 63994)->announcedBytes, 768000u);
    EXPECT_EQ(findShortfall(w64, 63994)->presentBytes, 63994u * 8);
    EXPECT_FALSE(findShortfall(w64, 96000));
    const std::string rf64 =
        "ds64 : 28\n  Riff size : 768096 (should be 512062)\n  Data size : 768000\n"
        "  Block Align   : 8\ndata : 0xFFFFFFFF\n";
    EXPECT_TRUE(findShortfall(rf64, 63995));
    EXPECT_FALSE(findShortfall(rf64, 96000));
}

TEST(FindShortfall, ReckonsThePacketsOfCaf) {
    const std::string caf = "Length : 196095\ncaff\n  Bytes / packet   : 8\ndata : 192004\n  edit : 0\n";
    EXPECT_TRUE(findShortfall(caf, 23999));
    EXPECT_FALSE(findShortfall(caf, 24000));
    EXPECT_FALSE(findShortfall("caff\n  Bytes / packet   : 0\ndata : 1234\n", 24000));
}

}  // namespace
}  // namespace korva::tool
