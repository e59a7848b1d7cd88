// What is kept or sent of a property's value.
#pragma once

#include "framework/shared_bytes.h"
#include "platform/published/property_types.h"

namespace korva::params {

/// A value's kind with the bytes that the kind stands for, see `platform::storedBytes`. Nothing for VT_EMPTY,
/// which stands for no value.
struct ValueBytes {
    VARTYPE kind = VT_EMPTY;
    framework::SharedBytes bytes;
};

/// Copies a value's bytes. 0x80004001 for a kind other than VT_EMPTY, VT_I4, VT_UI4, VT_I8, VT_UI8,
/// VT_LPWSTR, VT_BLOB and `platform::textList`; 0x80070057 for a blob or a list with a length but no
/// contents. A null string counts as an empty one. `taken` is as it was unless the result is 0.  [any]
[[nodiscard]] HRESULT takeBytes(REFPROPVARIANT value, ValueBytes& taken);

}  // namespace korva::params
