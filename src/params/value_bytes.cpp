#include "params/value_bytes.h"

#include <cstddef>
#include <span>

#include "platform/published/results.h"
#include "platform/registry_values.h"

namespace korva::params {

HRESULT takeBytes(REFPROPVARIANT value, ValueBytes& taken) {
    if (value.vt == VT_EMPTY) {
        taken = {};
        return published::ok;
    }
    platform::WideString joined;
    std::span<const std::byte> bytes;
    const HRESULT result = platform::storedBytes(value, joined, bytes);
    if (result == published::ok) {
        taken = {value.vt, framework::SharedBytes(bytes)};
    }
    return result;
}

}  // namespace korva::params
