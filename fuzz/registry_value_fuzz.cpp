// Values as they are stored: the first byte of an input is the type, the second how many times there is
// memory (255: always), the rest the data. A value is made or refused as its type and length say; nothing is
// left of one that there was no memory for; and one that was made comes back when its bytes are stored.
#include <cstddef>
#include <cstdint>
#include <span>

#include "fuzz/require.h"
#include "params/value_bytes.h"
#include "platform/property_value.h"
#include "platform/published/results.h"
#include "platform/registry.h"
#include "platform/registry_values.h"

namespace {

namespace published = korva::published;
namespace registry_type = korva::platform::registry_type;
using korva::fuzz::require;
using korva::params::ValueBytes;
using korva::platform::PropertyValue;
using korva::platform::RegistryValue;

std::uint8_t allocationsLeft = 0;

void* scarceMemory(std::size_t size) {
    if (allocationsLeft == 0) {
        return nullptr;
    }
    --allocationsLeft;
    return CoTaskMemAlloc(size);
}

HRESULT resultFor(const RegistryValue& stored) {
    constexpr auto invalidData = static_cast<HRESULT>(0x8007000DU);
    constexpr auto moreData = static_cast<HRESULT>(0x800700EAU);
    const std::size_t size = stored.data.size();
    switch (stored.type) {
        case registry_type::string:
        case registry_type::binary:
            return published::ok;
        case registry_type::dword:
            return size == 4 ? published::ok : size < 4 ? invalidData : moreData;
        case registry_type::multiString:
            return size % 2 == 0 ? published::ok : invalidData;
        default:
            return published::notImplemented;
    }
}

/// The bytes of the value that is made of what is stored.
ValueBytes bytesOf(const RegistryValue& stored) {
    PropertyValue value;
    ValueBytes bytes;
    require(korva::platform::variantOf(stored, *value.out()) == published::ok);
    require(korva::params::takeBytes(value.get(), bytes) == published::ok);
    return bytes;
}

void checkReturn(const RegistryValue& stored) {
    const ValueBytes first = bytesOf(stored);
    const auto bytes = first.bytes.bytes();
    require(korva::platform::registryTypeOf(first.kind) == stored.type);
    const ValueBytes second = bytesOf({stored.type, {bytes.begin(), bytes.end()}});
    require(second.kind == first.kind && second.bytes == first.bytes);
}

void checkScarcity(const RegistryValue& stored, std::uint8_t allocations) {
    allocationsLeft = allocations;
    PropertyValue value;
    const HRESULT result = korva::platform::variantOf(stored, *value.out(), scarceMemory);
    require(result == resultFor(stored) || (result == published::outOfMemory && allocationsLeft == 0));
    require((value->vt == VT_EMPTY) == (result != published::ok));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < 2) {
        return 0;
    }
    const auto contents = std::as_bytes(std::span(data, size).subspan(2));
    const RegistryValue stored{data[0], {contents.begin(), contents.end()}};
    PropertyValue value;
    const HRESULT result = korva::platform::variantOf(stored, *value.out());
    require(result == resultFor(stored));
    require((value->vt == VT_EMPTY) == (result != published::ok));
    if (result == published::ok) {
        checkReturn(stored);
    }
    if (data[1] != 0xFF) {
        checkScarcity(stored, data[1]);
    }
    return 0;
}
