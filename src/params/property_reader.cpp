#include "params/property_reader.h"

#include <optional>

#include "platform/last_error.h"
#include "platform/property_value.h"
#include "platform/published/results.h"
#include "platform/registry.h"
#include "platform/unicode.h"

namespace korva::params {
namespace {

/// A value that a store gave, unless the result says otherwise.
ReadResult readValue(IPropertyStore* store, REFPROPERTYKEY key, platform::PropertyValue& value) {
    if (store == nullptr) {
        return published::nullPointer;
    }
    const HRESULT result = store->GetValue(key, value.out());
    return published::failed(result) ? result : 0;
}

/// The result for a kind that isn't read.
ReadResult refusal(VARTYPE kind) noexcept {
    if (kind != VT_EMPTY) {
        platform::setLastError(platform::registry_result::wrongType);
    }
    return static_cast<ReadResult>(platform::lastError());
}

std::optional<std::uint32_t> numberIn(REFPROPVARIANT value) noexcept {
    switch (value.vt) {
        case VT_I1:
            // A plain `char` has a sign on some systems only.
            return static_cast<std::uint32_t>(static_cast<signed char>(value.cVal));
        case VT_UI1:
            return value.bVal;
        case VT_I2:
            return static_cast<std::uint32_t>(value.iVal);
        case VT_UI2:
            return value.uiVal;
        case VT_I4:
        case VT_UI4:
            return static_cast<std::uint32_t>(value.ulVal);
        default:
            return std::nullopt;
    }
}

}  // namespace

ReadResult ReadU32(IPropertyStore* store, REFPROPERTYKEY key, std::uint32_t& out) {
    out = 0;
    platform::PropertyValue value;
    if (const ReadResult result = readValue(store, key, value)) {
        return result;
    }
    const std::optional<std::uint32_t> number = numberIn(value.get());
    if (!number) {
        return refusal(value->vt);
    }
    out = *number;
    return 0;
}

ReadResult ReadText(IPropertyStore* store, REFPROPERTYKEY key, std::string& out) {
    out.clear();
    platform::PropertyValue value;
    if (const ReadResult result = readValue(store, key, value)) {
        return result;
    }
    if (value->vt != VT_LPWSTR) {
        return refusal(value->vt);
    }
    if (value->pwszVal != nullptr) {
        out = platform::toUtf8(value->pwszVal);
    }
    return 0;
}

ReadResult ReadTexts(IPropertyStore* store, REFPROPERTYKEY key, std::vector<std::string>& out) {
    out.clear();
    platform::PropertyValue value;
    if (const ReadResult result = readValue(store, key, value)) {
        return result;
    }
    if (value->vt != (VT_VECTOR | VT_LPWSTR)) {
        return refusal(value->vt);
    }
    for (ULONG i = 0; i < value->calpwstr.cElems; ++i) {
        const LPWSTR text = value->calpwstr.pElems[i];
        out.push_back(text != nullptr ? platform::toUtf8(text) : std::string());
    }
    return 0;
}

}  // namespace korva::params
