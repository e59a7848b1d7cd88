#include "korva/host/engine_buffers.h"

#include <gtest/gtest.h>

namespace korva::tool {
namespace {

TEST(EngineBuffers, AreOneWhereBothFormatsAgree) {
    EngineBuffers buffers({48000, 2, 0x3}, {48000, 2, 0x3}, 100);
    EXPECT_EQ(buffers.input().data(), buffers.output().data());
    EXPECT_EQ(buffers.input().size(), 200U);
    EXPECT_EQ(buffers.output().size(), 200U);
}

TEST(EngineBuffers, AreTwoWhereAnythingDiffers) {
    for (const SoundFormat& out :
         {SoundFormat{48000, 2, 0x3}, SoundFormat{44100, 6, 0x3F}, SoundFormat{48000, 6, 0x60F}}) {
        EngineBuffers buffers({48000, 6, 0x3F}, out, 100);
        EXPECT_NE(buffers.input().data(), buffers.output().data());
        EXPECT_EQ(buffers.input().size(), 600U);
        EXPECT_EQ(buffers.output().size(), std::size_t{100} * out.channels);
    }
}

TEST(EngineBuffers, GiveTheirFirstFrames) {
    EngineBuffers buffers({48000, 6, 0x3F}, {48000, 2, 0x3}, 100);
    EXPECT_EQ(buffers.input(30).size(), 180U);
    EXPECT_EQ(buffers.output(30).size(), 60U);
    EXPECT_EQ(buffers.output(30).data(), buffers.output().data());
}

}  // namespace
}  // namespace korva::tool
