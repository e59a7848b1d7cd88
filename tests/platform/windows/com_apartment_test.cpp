#include "platform/com_apartment.h"

#include <gtest/gtest.h>
#include <windows.h>

#include <objbase.h>

#include <functional>
#include <thread>

namespace korva::platform {
namespace {

/// The calling thread's apartment; APTTYPE_CURRENT for none.
APTTYPE apartment() {
    APTTYPE type = APTTYPE_CURRENT;
    APTTYPEQUALIFIER qualifier{};
    return SUCCEEDED(CoGetApartmentType(&type, &qualifier)) ? type : APTTYPE_CURRENT;
}

/// COM counts by threads, so each test has one of its own.
void onNewThread(const std::function<void()>& body) {
    std::thread(body).join();
}

TEST(ComApartment, MakesTheThreadAMemberForItsLife) {
    onNewThread([] {
        ASSERT_EQ(apartment(), APTTYPE_CURRENT);
        {
            const ComApartment member;
            EXPECT_EQ(apartment(), APTTYPE_MTA);
        }
        EXPECT_EQ(apartment(), APTTYPE_CURRENT);
    });
}

TEST(ComApartment, MayBeNested) {
    onNewThread([] {
        {
            const ComApartment outer;
            { const ComApartment inner; }
            EXPECT_EQ(apartment(), APTTYPE_MTA);
        }
        EXPECT_EQ(apartment(), APTTYPE_CURRENT);
    });
}

TEST(ComApartment, LeavesAThreadInTheApartmentThatItHas) {
    onNewThread([] {
        ASSERT_EQ(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED), S_OK);
        const APTTYPE own = apartment();
        EXPECT_NE(own, APTTYPE_MTA);
        {
            const ComApartment refused;
            EXPECT_EQ(apartment(), own);
        }
        EXPECT_EQ(apartment(), own);
        CoUninitialize();
        EXPECT_EQ(apartment(), APTTYPE_CURRENT);
    });
}

}  // namespace
}  // namespace korva::platform
