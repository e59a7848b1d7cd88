#include "platform/class_activation.h"

#include <gtest/gtest.h>

#include "platform/com_apartment.h"

namespace korva::platform {
namespace {

TEST(ClassActivation, OfAClassThatNobodyRegisteredGivesNothing) {
    const ComApartment apartment;
    constexpr CLSID nobodys = {0xA7B1C5D2, 0x3F0E, 0x4C57, {0x91, 0x11, 0x22, 0x33, 0x44, 0x55, 0x66, 0x77}};
    int nothing = 0;
    void* object = &nothing;

    EXPECT_EQ(createObjectOfClass(nobodys, published::iidOf<IUnknown>, &object), classNotRegistered);
    EXPECT_EQ(object, nullptr);
}

}  // namespace
}  // namespace korva::platform
