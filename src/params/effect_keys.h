// The properties that an effect is set by.
#pragma once

#include <cstdint>

#include "platform/published/property_types.h"

namespace korva::params {

/// The place of an effect in the audio engine's graph.
enum class EffectKind : std::uint32_t { stream = 1, mode = 2, endpoint = 3 };

[[nodiscard]] constexpr bool isEffectKind(std::uint32_t number) noexcept {
    return number >= static_cast<std::uint32_t>(EffectKind::stream) &&
           number <= static_cast<std::uint32_t>(EffectKind::endpoint);
}

/// The format identifier of the keys that select an effect's settings, and of those that all effects share.
inline constexpr GUID selectionFormat = {
    0x6DCC1AC8, 0x4A3C, 0x4A98, {0xA3, 0xA7, 0xF9, 0x67, 0x12, 0x7D, 0x57, 0x63}};

/// VT_LPWSTR: text of the GUID under which the effect's own properties are.
[[nodiscard]] constexpr PROPERTYKEY selectionKey(EffectKind kind) noexcept {
    return {selectionFormat, static_cast<DWORD>(kind) + 2};
}

/// Tells of the hardware: that it changes is noticed, whatever its value.
inline constexpr PROPERTYKEY hardwarePulseKey = {selectionFormat, 7};
/// A list of strings: the endpoint's clients.
inline constexpr PROPERTYKEY clientListKey = {selectionFormat, 8};

/// VT_UI4: 1 where the system has the endpoint's effects turned off (PKEY_AudioEndpoint_Disable_SysFx).
inline constexpr PROPERTYKEY disableSysFxKey = {
    {0x1DA5D803, 0xD492, 0x4EDD, {0x8C, 0x23, 0xE0, 0xC0, 0xFF, 0xEE, 0x7F, 0x0E}}, 5};

/// The properties under that GUID.
namespace effect_property {
inline constexpr DWORD presetVersion = 0;  ///< VT_UI4
inline constexpr DWORD modeFlags = 1;      ///< VT_UI4; see `mode_flag`.
inline constexpr DWORD engineId = 2;       ///< VT_LPWSTR: text of the engine's GUID.
inline constexpr DWORD firstChunk = 3000;  ///< VT_BLOB; the k-th chunk's is `firstChunk` + k.
}  // namespace effect_property

namespace mode_flag {
inline constexpr DWORD hardware = 1;  ///< Try the hardware platform first.
}  // namespace mode_flag

}  // namespace korva::params
