// The base types that published interfaces and records are made of, the same on every system.
#pragma once

#include "native/base_types.h"

static_assert(sizeof(BYTE) == 1 && sizeof(WCHAR) == 2);
static_assert(sizeof(DWORD) == 4 && sizeof(LONG) == 4 && sizeof(ULONG) == 4 && sizeof(UINT32) == 4);
static_assert(sizeof(UINT_PTR) == 8 && sizeof(void*) == 8);
static_assert(sizeof(GUID) == 16 && alignof(GUID) == 4);
