// Any bytes under any type of the registry, as a value: what is read is the caller's to free, and a list of
// strings has them all.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "params/multi_string.h"
#include "params/property_value.h"
#include "params/registry_values.h"
#include "params/value_bytes.h"
#include "platform/published/results.h"

namespace {

using namespace korva;

void require(bool holds) {
    if (!holds) {
        std::abort();
    }
}

/// The strings, each with its zero, are the text again, but for a zero that it lacks at its end.
void checkStrings(const platform::WideString& text) {
    platform::WideView rest = text;
    platform::WideString joined;
    for (std::size_t left = params::stringCount(text); left != 0; --left) {
        require(!rest.empty());
        joined += params::takeString(rest);
        joined += WCHAR{0};
    }
    require(rest.empty());
    require(joined == text || joined == text + WCHAR{0});
}

/// The type is the first byte, the value the others.
platform::RegistryValue valueIn(const std::uint8_t* data, std::size_t size) {
    platform::RegistryValue stored;
    if (size != 0) {
        const auto* const bytes = reinterpret_cast<const std::byte*>(data);
        stored.type = data[0];
        stored.data.assign(bytes + 1, bytes + size);
    }
    return stored;
}

platform::WideString unitsOf(const std::vector<std::byte>& data) {
    platform::WideString units(data.size() / sizeof(WCHAR), WCHAR{0});
    if (!units.empty()) {
        std::memcpy(units.data(), data.data(), units.size() * sizeof(WCHAR));
    }
    return units;
}

/// What was read can be written, and then it reads as the same kind.
void checkValue(const platform::RegistryValue& stored) {
    params::PropertyValue value;
    if (params::variantOf(stored, *value.out()) != published::ok) {
        require(value->vt == VT_EMPTY);
        return;
    }
    params::ValueBytes taken;
    require(params::takeBytes(value.get(), taken) == published::ok);
    require(params::registryTypeOf(taken.kind) == stored.type);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const platform::RegistryValue stored = valueIn(data, size);
    checkStrings(unitsOf(stored.data));
    checkValue(stored);
    return 0;
}
