// A library with modules, and an endpoint whose settings choose among them.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "platform/com_apartment.h"
#include "platform/registry.h"
#include "tests/support/own_registry.h"
#include "tests/support/recorded_calls.h"
#include "tests/support/seeded_endpoint.h"
#include "tests/system/support/hosted_library.h"
#include "tests/system/support/hosted_object.h"
#include "tests/system/support/init_records.h"
#include "tests/system/support/known_ids.h"
#include "tests/system/support/own_devices.h"
#include "tests/system/support/sound_service.h"

namespace korva::test {

/// Engines that settings may choose.
namespace engine {
inline constexpr const char* first = "{14A6DE13-1380-0E52-AEE0-8803E93E40C8}";
inline constexpr const char* withoutModule = "{E31BA197-F8B2-5154-B081-1E8059747558}";
inline constexpr const char* third = "{C9F475BC-13E4-6150-AE88-790995AFC7C1}";
}  // namespace engine

/// All that a host, an installer and a control program have around an audio object, each a test's own.
class HostedEffect {
public:
    /// The recorder's first answers.
    explicit HostedEffect(const std::string& answers = {});
    ~HostedEffect();
    HostedEffect(const HostedEffect&) = delete;
    HostedEffect& operator=(const HostedEffect&) = delete;

    /// Writes the settings of a class, as an installer does before any object is there.
    void install(const ClassFacts& facts, const char* engineId = engine::third,
                 std::uint32_t modeFlags = 0) const;
    /// Writes the `k`-th chunk of the preset.
    void writePreset(std::uint32_t k, std::span<const std::byte> blob) const;
    /// The key of that chunk's property.
    [[nodiscard]] static PROPERTYKEY presetKey(std::uint32_t k);

    /// Initialises an object with the endpoint, by a record of the second generation.
    HRESULT initialize(HostedObject& object, const GUID& mode = mode::standard);

    /// The calls so far, as `textsOf` writes them, without those that play; they are those that the object's
    /// thread has done by the end of the last call that waited for it.
    [[nodiscard]] std::vector<std::string> calls() const;
    /// Those since the last time.
    [[nodiscard]] std::vector<std::string> newCalls();
    /// How often a function was called.
    [[nodiscard]] std::size_t count(std::string_view function) const;

    const platform::ComApartment apartment;
    const OwnRegistry registry;
    const SoundService sound;
    const SeededEndpoint endpoint;
    Recording recording;
    const HostedLibrary library;

    // What an object is initialised with.
    OwnPropertyStore endpointProperties;
    OwnPropertyStore effectsProperties;
    OwnDevice device{endpoint.id()};
    OwnDevices devices{&device};

private:
    void setText(REFPROPERTYKEY key, std::string_view text) const;
    void setNumber(REFPROPERTYKEY key, std::uint32_t number) const;

    platform::RegistryKey settings;
    std::size_t seen = 0;
};

}  // namespace korva::test
