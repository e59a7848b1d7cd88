#include "params/value_bytes.h"

#include <span>

#include "platform/published/results.h"
#include "platform/registry_values.h"
#include "platform/unicode.h"

namespace korva::params {
namespace {

using framework::SharedBytes;
using platform::WideString;
using platform::WideView;

WideView textAt(LPCWSTR text) noexcept {
    return text == nullptr ? WideView() : WideView(text);
}

SharedBytes bytesOf(const WideString& units) {
    return SharedBytes(std::as_bytes(std::span(units)));
}

template <class Number>
SharedBytes bytesOf(const Number& number) {
    return SharedBytes(std::as_bytes(std::span(&number, 1)));
}

SharedBytes bytesOf(const BLOB& blob) {
    return SharedBytes(std::as_bytes(std::span(blob.pBlobData, blob.cbSize)));
}

SharedBytes bytesOf(const CALPWSTR& list) {
    WideString joined;
    for (ULONG i = 0; i < list.cElems; ++i) {
        joined += textAt(list.pElems[i]);
        joined += WCHAR{0};
    }
    return bytesOf(joined);
}

}  // namespace

HRESULT takeBytes(REFPROPVARIANT value, ValueBytes& taken) {
    SharedBytes bytes;
    switch (value.vt) {
        case VT_EMPTY:
            break;
        case VT_I4:
        case VT_UI4:
            bytes = bytesOf(value.ulVal);
            break;
        case VT_I8:
        case VT_UI8:
            bytes = bytesOf(value.uhVal.QuadPart);
            break;
        case VT_LPWSTR:
            bytes = bytesOf(WideString(textAt(value.pwszVal)) + WCHAR{0});
            break;
        case VT_BLOB:
            if (value.blob.cbSize != 0 && value.blob.pBlobData == nullptr) {
                return published::invalidArgument;
            }
            bytes = bytesOf(value.blob);
            break;
        case platform::textList:
            if (value.calpwstr.cElems != 0 && value.calpwstr.pElems == nullptr) {
                return published::invalidArgument;
            }
            bytes = bytesOf(value.calpwstr);
            break;
        default:
            return published::notImplemented;
    }
    taken = {value.vt, std::move(bytes)};
    return published::ok;
}

}  // namespace korva::params
