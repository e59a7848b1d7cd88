#include <gtest/gtest.h>

#include "platform/published/property_types.h"

namespace {

TEST(PropertyVariant, OfAKindThatIsUnknownIsLeftAlone) {
    for (const VARTYPE type : {VARTYPE{1}, VARTYPE{0xFFF}, VARTYPE{VT_VECTOR | VT_I4}, VARTYPE{0xFFFF}}) {
        PROPVARIANT value;
        PropVariantInit(&value);
        value.vt = type;
        value.uhVal.QuadPart = 5;
        EXPECT_LT(PropVariantClear(&value), 0);
        EXPECT_EQ(value.vt, type);
        EXPECT_EQ(value.uhVal.QuadPart, 5u);
    }
}

TEST(TaskMemory, IsThatOfTheStandardLibrary) {
    // A host frees with `free` what it was given, and gives what it allocated with `malloc`.
    PROPVARIANT value;
    PropVariantInit(&value);
    value.vt = VT_BLOB;
    value.blob = {.cbSize = 16, .pBlobData = static_cast<BYTE*>(std::malloc(16))};
    EXPECT_EQ(PropVariantClear(&value), 0);
    std::free(CoTaskMemRealloc(CoTaskMemAlloc(8), 16));
}

}  // namespace
