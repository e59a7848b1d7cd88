#include "platform/registry_values.h"

#include <cstring>
#include <span>

#include "platform/multi_string.h"
#include "platform/published/results.h"

namespace korva::platform {
namespace {

using Bytes = std::span<const std::byte>;

/// Variant memory with a copy of `bytes`, and `zeroCount` zero bytes behind; null without memory.
void* copyOf(Bytes bytes, std::size_t zeroCount, TaskMemory allocate) {
    auto* const copy = static_cast<std::byte*>(allocate(bytes.size() + zeroCount));
    if (copy != nullptr) {
        if (!bytes.empty()) {
            std::memcpy(copy, bytes.data(), bytes.size());
        }
        std::memset(copy + bytes.size(), 0, zeroCount);
    }
    return copy;
}

LPWSTR terminatedCopy(Bytes units, TaskMemory allocate) {
    return static_cast<LPWSTR>(copyOf(units, sizeof(WCHAR), allocate));
}

HRESULT setText(PROPVARIANT& value, Bytes data, TaskMemory allocate) {
    const LPWSTR text = terminatedCopy(data.first(data.size() - data.size() % sizeof(WCHAR)), allocate);
    if (text == nullptr) {
        return published::outOfMemory;
    }
    value.vt = VT_LPWSTR;
    value.pwszVal = text;
    return published::ok;
}

HRESULT setBlob(PROPVARIANT& value, Bytes data, TaskMemory allocate) {
    BLOB blob{};
    if (!data.empty()) {
        blob = {static_cast<ULONG>(data.size()), static_cast<BYTE*>(copyOf(data, 0, allocate))};
        if (blob.pBlobData == nullptr) {
            return published::outOfMemory;
        }
    }
    value.vt = VT_BLOB;
    value.blob = blob;
    return published::ok;
}

HRESULT setNumber(PROPVARIANT& value, Bytes data) {
    if (data.size() > sizeof(value.ulVal)) {
        return hresultOf(registry_result::moreData);
    }
    if (data.size() < sizeof(value.ulVal)) {
        return hresultOf(registry_result::invalidData);
    }
    value.vt = VT_UI4;
    std::memcpy(&value.ulVal, data.data(), sizeof(value.ulVal));
    return published::ok;
}

WideString unitsOf(Bytes data) {
    WideString units(data.size() / sizeof(WCHAR), WCHAR{0});
    if (!units.empty()) {
        std::memcpy(units.data(), data.data(), data.size());
    }
    return units;
}

/// Adds the strings one by one, so that the list frees those that it has when there is no memory for more.
bool addStrings(CALPWSTR& list, WideView rest, std::size_t count, TaskMemory allocate) {
    while (list.cElems < count) {
        const LPWSTR copy = terminatedCopy(std::as_bytes(std::span(takeString(rest))), allocate);
        if (copy == nullptr) {
            return false;
        }
        list.pElems[list.cElems++] = copy;
    }
    return true;
}

HRESULT setList(PROPVARIANT& value, Bytes data, TaskMemory allocate) {
    if (data.size() % sizeof(WCHAR) != 0) {
        return hresultOf(registry_result::invalidData);
    }
    const WideString units = unitsOf(data);
    const std::size_t count = stringCount(units);
    CALPWSTR list{};
    if (count != 0) {
        list.pElems = static_cast<LPWSTR*>(allocate(count * sizeof(LPWSTR)));
        if (list.pElems == nullptr) {
            return published::outOfMemory;
        }
    }
    const bool isComplete = addStrings(list, units, count, allocate);
    value.vt = textList;
    value.calpwstr = list;
    if (!isComplete) {
        PropVariantClear(&value);
        return published::outOfMemory;
    }
    return published::ok;
}

/// With its terminator; null is an empty one.
Bytes terminatedBytes(LPCWSTR text) noexcept {
    static constexpr WCHAR empty[1] = {};
    const LPCWSTR start = text == nullptr ? empty : text;
    return std::as_bytes(std::span(start, WideView(start).size() + 1));
}

WideString joinedStrings(const CALPWSTR& list) {
    WideString joined;
    for (ULONG i = 0; i < list.cElems; ++i) {
        if (list.pElems[i] != nullptr) {
            joined += list.pElems[i];
        }
        joined += WCHAR{0};
    }
    return joined;
}

}  // namespace

std::optional<std::uint32_t> registryTypeOf(VARTYPE kind) noexcept {
    switch (kind) {
        case VT_I4:
        case VT_UI4:
            return registry_type::dword;
        case VT_I8:
        case VT_UI8:
            return registry_type::qword;
        case VT_LPWSTR:
            return registry_type::string;
        case VT_BLOB:
            return registry_type::binary;
        case textList:
            return registry_type::multiString;
        default:
            return std::nullopt;
    }
}

HRESULT storedBytes(REFPROPVARIANT value, WideString& joined, Bytes& bytes) {
    switch (value.vt) {
        case VT_I4:
        case VT_UI4:
            bytes = std::as_bytes(std::span(&value.ulVal, 1));
            return published::ok;
        case VT_I8:
        case VT_UI8:
            bytes = std::as_bytes(std::span(&value.uhVal.QuadPart, 1));
            return published::ok;
        case VT_LPWSTR:
            bytes = terminatedBytes(value.pwszVal);
            return published::ok;
        case VT_BLOB:
            if (value.blob.cbSize != 0 && value.blob.pBlobData == nullptr) {
                return published::invalidArgument;
            }
            bytes = std::as_bytes(std::span(value.blob.pBlobData, value.blob.cbSize));
            return published::ok;
        case textList:
            if (value.calpwstr.cElems != 0 && value.calpwstr.pElems == nullptr) {
                return published::invalidArgument;
            }
            joined = joinedStrings(value.calpwstr);
            bytes = std::as_bytes(std::span(joined));
            return published::ok;
        default:
            return published::notImplemented;
    }
}

HRESULT variantOf(const RegistryValue& stored, PROPVARIANT& value, TaskMemory allocate) {
    switch (stored.type) {
        case registry_type::string:
            return setText(value, stored.data, allocate);
        case registry_type::binary:
            return setBlob(value, stored.data, allocate);
        case registry_type::dword:
            return setNumber(value, stored.data);
        case registry_type::multiString:
            return setList(value, stored.data, allocate);
        default:
            return published::notImplemented;
    }
}

HRESULT variantOf(const RegistryValue& stored, PROPVARIANT& value) {
    return variantOf(stored, value, [](std::size_t size) { return CoTaskMemAlloc(size); });
}

}  // namespace korva::platform
