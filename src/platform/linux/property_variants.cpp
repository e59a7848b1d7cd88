#include "platform/published/property_types.h"
#include "platform/published/unknown.h"

namespace {

constexpr auto invalidParameter = static_cast<HRESULT>(0x80030057U);  // STG_E_INVALIDPARAMETER

void freeTexts(const CALPWSTR& texts) noexcept {
    for (ULONG i = 0; texts.pElems != nullptr && i < texts.cElems; ++i) {
        CoTaskMemFree(texts.pElems[i]);
    }
    CoTaskMemFree(texts.pElems);
}

/// Whether `value` is of a kind that is known; what it owns is freed then.
bool freeContent(const PROPVARIANT& value) noexcept {
    switch (value.vt) {
        case VT_EMPTY:
        case VT_I2:
        case VT_I4:
        case VT_R4:
        case VT_R8:
        case VT_BOOL:
        case VT_I1:
        case VT_UI1:
        case VT_UI2:
        case VT_UI4:
        case VT_I8:
        case VT_UI8:
            return true;
        case VT_UNKNOWN:
            if (value.punkVal != nullptr) {
                value.punkVal->Release();
            }
            return true;
        case VT_LPSTR:
            CoTaskMemFree(value.pszVal);
            return true;
        case VT_LPWSTR:
            CoTaskMemFree(value.pwszVal);
            return true;
        case VT_BLOB:
            CoTaskMemFree(value.blob.pBlobData);
            return true;
        case VT_CLSID:
            CoTaskMemFree(value.puuid);
            return true;
        case VT_VECTOR | VT_LPWSTR:
            freeTexts(value.calpwstr);
            return true;
        default:
            return false;
    }
}

}  // namespace

HRESULT PropVariantClear(PROPVARIANT* value) noexcept {
    if (value == nullptr) {
        return 0;
    }
    if (!freeContent(*value)) {
        return invalidParameter;
    }
    PropVariantInit(value);
    return 0;
}
