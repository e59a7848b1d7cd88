// The published base types of Windows, with their names and binary layouts, declared for Linux.
#pragma once

#include <cstdint>

using BYTE = std::uint8_t;
using UINT32 = std::uint32_t;
using DWORD = std::uint32_t;
using LONG = std::int32_t;
using ULONG = std::uint32_t;
using UINT_PTR = std::uintptr_t;
using WCHAR = char16_t;

struct GUID {
    std::uint32_t Data1;
    std::uint16_t Data2;
    std::uint16_t Data3;
    std::uint8_t Data4[8];
};
