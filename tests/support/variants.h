// Variant values for tests. What they point at stays the test's, so nobody clears them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "platform/published/property_types.h"
#include "platform/unicode.h"

namespace korva::test {

[[nodiscard]] inline PROPVARIANT variantOfKind(VARTYPE kind) {
    PROPVARIANT value{};
    value.vt = kind;
    return value;
}

[[nodiscard]] inline PROPVARIANT unsignedVariant(std::uint32_t number) {
    PROPVARIANT value = variantOfKind(VT_UI4);
    value.ulVal = number;
    return value;
}

[[nodiscard]] inline PROPVARIANT signedVariant(std::int32_t number) {
    PROPVARIANT value = variantOfKind(VT_I4);
    value.lVal = number;
    return value;
}

[[nodiscard]] inline PROPVARIANT wideVariant(std::uint64_t number) {
    PROPVARIANT value = variantOfKind(VT_UI8);
    value.uhVal.QuadPart = number;
    return value;
}

[[nodiscard]] inline PROPVARIANT textVariant(platform::WideString& text) {
    PROPVARIANT value = variantOfKind(VT_LPWSTR);
    value.pwszVal = text.data();
    return value;
}

[[nodiscard]] inline PROPVARIANT blobVariant(std::span<BYTE> bytes) {
    PROPVARIANT value = variantOfKind(VT_BLOB);
    value.blob.cbSize = static_cast<ULONG>(bytes.size());
    value.blob.pBlobData = bytes.data();
    return value;
}

[[nodiscard]] inline PROPVARIANT listVariant(std::span<LPWSTR> strings) {
    PROPVARIANT value = variantOfKind(static_cast<VARTYPE>(VT_VECTOR | VT_LPWSTR));
    value.calpwstr.cElems = static_cast<ULONG>(strings.size());
    value.calpwstr.pElems = strings.data();
    return value;
}

}  // namespace korva::test
