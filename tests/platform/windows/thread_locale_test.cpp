#include "platform/thread_locale.h"

#include <gtest/gtest.h>
#include <windows.h>

namespace korva::platform {
namespace {

constexpr LCID german = MAKELCID(MAKELANGID(LANG_GERMAN, SUBLANG_GERMAN), SORT_DEFAULT);

TEST(SystemLocale, IsTheSystemsUntilItEnds) {
    const LCID former = GetThreadLocale();
    ASSERT_NE(GetSystemDefaultLCID(), german);
    ASSERT_TRUE(SetThreadLocale(german));
    {
        const SystemLocale locale;
        EXPECT_EQ(GetThreadLocale(), GetSystemDefaultLCID());
    }
    EXPECT_EQ(GetThreadLocale(), german);
    SetThreadLocale(former);
}

}  // namespace
}  // namespace korva::platform
