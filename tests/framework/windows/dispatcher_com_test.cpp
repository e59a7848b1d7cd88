#include <gtest/gtest.h>
#include <windows.h>

#include <objbase.h>

#include "framework/dispatcher.h"

namespace korva::framework {
namespace {

TEST(DispatcherThread, IsAMemberOfTheMultithreadedApartment) {
    const DispatcherUse dispatcher = Dispatcher::start();
    HRESULT result = E_FAIL;
    APTTYPE type = APTTYPE_CURRENT;
    APTTYPEQUALIFIER qualifier = APTTYPEQUALIFIER_IMPLICIT_MTA;
    dispatcher->runSynchronously([&] { result = CoGetApartmentType(&type, &qualifier); });
    EXPECT_EQ(result, S_OK);
    EXPECT_EQ(type, APTTYPE_MTA);
    EXPECT_EQ(qualifier, APTTYPEQUALIFIER_NONE) << "one of its own, not that of other threads";
}

}  // namespace
}  // namespace korva::framework
