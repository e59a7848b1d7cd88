// Property keys and variants of Windows, with their names and binary layouts, declared for Linux. Memory is
// that of malloc, so that whoever takes a value over may free it.
#pragma once

#include <cstdlib>

#include "native/base_types.h"

struct PROPERTYKEY {
    GUID fmtid;
    DWORD pid;
};
using REFPROPERTYKEY = const PROPERTYKEY&;

inline bool operator==(REFPROPERTYKEY a, REFPROPERTYKEY b) noexcept {
    return a.pid == b.pid && a.fmtid == b.fmtid;
}

using VARTYPE = WORD;
enum VARENUM : WORD {
    VT_EMPTY = 0,
    VT_I2 = 2,
    VT_I4 = 3,
    VT_R4 = 4,
    VT_R8 = 5,
    VT_BOOL = 11,
    VT_UNKNOWN = 13,
    VT_I1 = 16,
    VT_UI1 = 17,
    VT_UI2 = 18,
    VT_UI4 = 19,
    VT_I8 = 20,
    VT_UI8 = 21,
    VT_LPSTR = 30,
    VT_LPWSTR = 31,
    VT_BLOB = 65,
    VT_CLSID = 72,
    VT_VECTOR = 0x1000
};

union LARGE_INTEGER {
    LONGLONG QuadPart;
};
union ULARGE_INTEGER {
    ULONGLONG QuadPart;
};
struct BLOB {
    ULONG cbSize;
    BYTE* pBlobData;
};
struct CALPWSTR {
    ULONG cElems;
    LPWSTR* pElems;
};

struct IUnknown;

/// A value of one of many kinds. `PropVariantClear` frees what it owns.
struct PROPVARIANT {
    VARTYPE vt;
    WORD wReserved1;
    WORD wReserved2;
    WORD wReserved3;
    union {
        char cVal;
        BYTE bVal;
        std::int16_t iVal;
        WORD uiVal;
        LONG lVal;
        ULONG ulVal;
        LARGE_INTEGER hVal;
        ULARGE_INTEGER uhVal;
        float fltVal;
        double dblVal;
        std::int16_t boolVal;
        CLSID* puuid;
        char* pszVal;
        LPWSTR pwszVal;
        BLOB blob;
        CALPWSTR calpwstr;
        IUnknown* punkVal;
    };
};
using REFPROPVARIANT = const PROPVARIANT&;

inline void PropVariantInit(PROPVARIANT* value) noexcept {
    *value = PROPVARIANT{};
}

/// Frees what the value owns and makes it `VT_EMPTY`. A kind that it doesn't know is left alone, with
/// STG_E_INVALIDPARAMETER.  [any]
HRESULT PropVariantClear(PROPVARIANT* value) noexcept;

inline void* CoTaskMemAlloc(std::size_t size) noexcept {
    return std::malloc(size);
}
inline void* CoTaskMemRealloc(void* memory, std::size_t size) noexcept {
    return std::realloc(memory, size);
}
inline void CoTaskMemFree(void* memory) noexcept {
    std::free(memory);
}
