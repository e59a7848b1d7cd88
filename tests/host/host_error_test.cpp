#include "korva/host/host_error.h"

#include <gtest/gtest.h>

#include "platform/published/results.h"
#include "tests/host/expected_error.h"

namespace korva::tool {
namespace {

TEST(HostError, TellsResultsByNumberAndWords) {
    EXPECT_EQ(resultText(published::formatNotSupported), "0x887d0003, format not supported");
    EXPECT_EQ(resultText(published::invalidArgument), "0x80070057, invalid argument");
    EXPECT_EQ(resultText(published::ok), "0x00000000, done");
    EXPECT_EQ(resultText(static_cast<HRESULT>(0x80041234U)), "0x80041234");
}

TEST(HostError, IsThrownForFailuresOnly) {
    EXPECT_NO_THROW(throwIfFailed(published::ok, "it"));
    EXPECT_NO_THROW(throwIfFailed(published::okButNo, "it"));
    EXPECT_TRUE(test::failsWith([] { throwIfFailed(published::outOfMemory, "it"); },
                                {"it: 0x8007000e, out of memory"}));
}

}  // namespace
}  // namespace korva::tool
