// How each value of an endpoint's chain is made of those before it. What is missing or refused gives none:
// the default of the type.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "framework/ref.h"
#include "params/chunk_reader.h"
#include "params/parameter_set.h"
#include "platform/published/device_interfaces.h"
#include "platform/published/property_interfaces.h"
#include "platform/unicode.h"

namespace korva::engine {

/// The readers of an engine's chunks; the one at index k reads the property `firstChunk` + k.
using ChunkReaders = std::vector<framework::Held<params::ChunkReader>>;

using PropertyStore = framework::Ref<IPropertyStore>;
using EffectsStore = framework::Ref<published::IAudioSystemEffectsPropertyStore>;

/// The identifier in UTF-8; empty for an object that is closed.  [any]
[[nodiscard]] std::string endpointIdOf(const platform::WideString& identifier, bool isAlive);

/// What a device calls itself; empty for null, and for one that doesn't tell.  [any]
[[nodiscard]] platform::WideString identifierOf(IMMDevice* device);

/// The first GUID in braces that an identifier has, braces included; empty without one.  [any]
[[nodiscard]] std::string guidTextIn(std::string_view endpointId);

/// The device of an identifier that the system knows.  [owner]
[[nodiscard]] framework::Ref<IMMDevice> deviceOf(const framework::Ref<IMMDeviceEnumerator>& devices,
                                                 const std::string& endpointId);

/// The volume of a device that is active.  [owner]
[[nodiscard]] framework::Ref<IAudioEndpointVolume> volumeOf(const framework::Ref<IMMDevice>& device);

// Stores are opened to read and write, or else to read.  [owner]
[[nodiscard]] PropertyStore propertiesOf(const framework::Ref<IMMDevice>& device);
[[nodiscard]] PropertyStore defaultStoreOf(const EffectsStore& stores);
[[nodiscard]] PropertyStore userStoreOf(const EffectsStore& stores);
[[nodiscard]] PropertyStore volatileStoreOf(const EffectsStore& stores);

/// The GUID that the text at `key` gives; none where the key is all zero.  [owner]
[[nodiscard]] GUID guidAt(const PropertyStore& store, REFPROPERTYKEY key);

/// Text of a GUID that isn't all zero.  [any]
[[nodiscard]] std::string textOf(const GUID& guid);
[[nodiscard]] platform::WideString wideTextOf(const GUID& guid);

// Properties of the effect `fxId`.  [owner]
[[nodiscard]] std::uint32_t presetVersionIn(const PropertyStore& store, const GUID& fxId);
[[nodiscard]] std::uint32_t modeFlagsIn(const PropertyStore& store, const GUID& fxId);
[[nodiscard]] GUID engineIdIn(const PropertyStore& store, const GUID& fxId);

/// The parameters of an engine; a set without any for an unknown one.  [owner]
[[nodiscard]] std::shared_ptr<const params::ParameterSet> parametersOf(const GUID& engineId);

/// A reader for each chunk, which has read it once.  [owner]
[[nodiscard]] std::shared_ptr<const ChunkReaders> readersOf(
    const PropertyStore& store, const GUID& fxId,
    const std::shared_ptr<const params::ParameterSet>& parameters);

/// The endpoint's list of clients.  [owner]
[[nodiscard]] std::shared_ptr<const std::vector<std::string>> clientListIn(const PropertyStore& store);
[[nodiscard]] bool hasEntries(const std::shared_ptr<const std::vector<std::string>>& list);

}  // namespace korva::engine
