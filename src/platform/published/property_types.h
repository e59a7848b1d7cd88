// Properties as published interfaces carry them: keys, variant values, and the memory that values own.
#pragma once

#include <cstddef>

#include "native/property_types.h"
#include "platform/published/base_types.h"

static_assert(sizeof(PROPERTYKEY) == 20 && offsetof(PROPERTYKEY, pid) == 16);
static_assert(sizeof(PROPVARIANT) == 24 && alignof(PROPVARIANT) == 8);
static_assert(offsetof(PROPVARIANT, vt) == 0 && offsetof(PROPVARIANT, ulVal) == 8);
static_assert(sizeof(BLOB) == 16 && offsetof(BLOB, pBlobData) == 8);
static_assert(sizeof(CALPWSTR) == 16 && offsetof(CALPWSTR, pElems) == 8);
static_assert(VT_EMPTY == 0 && VT_I2 == 2 && VT_I4 == 3 && VT_R4 == 4 && VT_I1 == 16 && VT_UI1 == 17);
static_assert(VT_UI2 == 18 && VT_UI4 == 19 && VT_I8 == 20 && VT_UI8 == 21 && VT_LPWSTR == 31);
static_assert(VT_BLOB == 65 && VT_CLSID == 72 && VT_VECTOR == 0x1000);
