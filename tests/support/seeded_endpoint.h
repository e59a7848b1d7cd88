// An audio endpoint that a test puts into the registry.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "platform/endpoint_place.h"
#include "platform/published/property_types.h"
#include "platform/registry.h"

namespace korva::test {

/// An endpoint that nobody else has, with a state and no properties; removed with this object. Where tests
/// have registries of their own, it is in the one at hand.
class SeededEndpoint {
public:
    explicit SeededEndpoint(EDataFlow flow = eRender, std::uint32_t state = 1);
    ~SeededEndpoint();
    SeededEndpoint(const SeededEndpoint&) = delete;
    SeededEndpoint& operator=(const SeededEndpoint&) = delete;

    [[nodiscard]] const platform::EndpointPlace& place() const noexcept { return endpoint; }
    [[nodiscard]] std::string id() const { return platform::endpointIdOf(endpoint); }
    [[nodiscard]] std::string path() const { return platform::endpointPath(endpoint); }

    /// The endpoint's key, open to read and write.
    [[nodiscard]] const platform::RegistryKey& key() const noexcept { return opened; }

    void setNumber(std::string_view name, std::uint32_t number) const;
    /// The bits of `scalar`, which need not be a volume.
    void setVolume(float scalar) const;
    /// Takes its key away, with all in it.
    void remove() const;

private:
    platform::EndpointPlace endpoint;
    platform::RegistryKey opened;
};

}  // namespace korva::test
