#include "platform/endpoint_values.h"

#include <bit>
#include <cstring>
#include <optional>
#include <string>
#include <utility>

namespace korva::platform {
namespace {

/// A number that is no REG_DWORD is none. The result is 0 as well if the value isn't there.
RegistryResult readNumber(const RegistryKey& key, std::string_view name,
                          std::optional<std::uint32_t>& number) {
    RegistryValue value;
    number.reset();
    const RegistryResult result = key.readValue(name, value);
    if (result != registry_result::success) {
        return result == registry_result::notFound ? registry_result::success : result;
    }
    if (value.type == registry_type::dword && value.data.size() == sizeof(std::uint32_t)) {
        std::uint32_t stored = 0;
        std::memcpy(&stored, value.data.data(), sizeof(stored));
        number = stored;
    }
    return registry_result::success;
}

bool isState(std::uint32_t number) noexcept {
    return number == published::deviceStateActive || number == published::deviceStateDisabled ||
           number == published::deviceStateNotPresent || number == published::deviceStateUnplugged;
}

}  // namespace

RegistryResult readEndpoints(const RegistryKey& machine, EDataFlow flow, std::vector<EndpointPlace>& places) {
    RegistryKey key;
    RegistryResult result = machine.open(endpointsPath(flow), RegistryAccess::read, key);
    std::vector<EndpointPlace> found;
    std::string name;
    for (std::uint32_t index = 0; result == registry_result::success; ++index) {
        result = key.keyName(index, name);
        if (result != registry_result::success) {
            break;
        }
        if (const auto place = endpointPlaceOf(flow, name)) {
            found.push_back(*place);
        }
    }
    if (result != registry_result::noMoreItems && result != registry_result::notFound &&
        result != registry_result::keyDeleted) {
        return result;
    }
    places = std::move(found);
    return registry_result::success;
}

RegistryResult readEndpointState(const RegistryKey& endpoint, std::uint32_t& state) {
    std::optional<std::uint32_t> number;
    const RegistryResult result = readNumber(endpoint, endpoint_value::state, number);
    if (result == registry_result::success) {
        // The system keeps marks of its own in the upper bits.
        const std::uint32_t known = number.value_or(0) & published::deviceStatesAll;
        state = isState(known) ? known : published::deviceStateNotPresent;
    }
    return result;
}

RegistryResult readEndpointLoudness(const RegistryKey& endpoint, EndpointLoudness& loudness) {
    std::optional<std::uint32_t> bits;
    std::optional<std::uint32_t> muted;
    RegistryResult result = readNumber(endpoint, endpoint_value::volume, bits);
    if (result == registry_result::success) {
        result = readNumber(endpoint, endpoint_value::muted, muted);
    }
    if (result == registry_result::success) {
        const float scalar = bits ? std::bit_cast<float>(*bits) : 1.0F;
        loudness = {isVolume(scalar) ? scalar : 1.0F, muted.value_or(0) != 0};
    }
    return result;
}

RegistryValue volumeValue(float scalar) {
    return numberValue(std::bit_cast<std::uint32_t>(scalar));
}

RegistryValue numberValue(std::uint32_t number) {
    RegistryValue value{registry_type::dword, std::vector<std::byte>(sizeof(number))};
    std::memcpy(value.data.data(), &number, sizeof(number));
    return value;
}

}  // namespace korva::platform
