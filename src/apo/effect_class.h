// The classes of this library: one for each place in the audio engine's graph.
#pragma once

#include <array>
#include <cstdint>
#include <string_view>

#include "apo/own_interfaces.h"
#include "params/effect_keys.h"
#include "platform/published/audio_object_records.h"

namespace korva::apo {

using published::APO_REG_PROPERTIES;

/// What differs between the classes.
struct EffectClass {
    params::EffectKind kind;
    APO_REG_PROPERTIES record;
    std::uint16_t script;  ///< The resource that registers it.

    [[nodiscard]] constexpr const IID& ownInterface() const noexcept { return record.iidAPOInterfaceList[0]; }
};

/// The record of a class whose objects have one input and one output, as many of them as a host wants.
[[nodiscard]] constexpr APO_REG_PROPERTIES recordOf(const CLSID& clsid, const IID& ownInterface,
                                                    std::string_view name, std::uint32_t flags) noexcept {
    constexpr std::string_view copyright = "Copyright (c) the Korva team";
    APO_REG_PROPERTIES record{};
    record.clsid = clsid;
    record.Flags = flags;
    for (std::size_t i = 0; i < name.size(); ++i) {
        record.szFriendlyName[i] = static_cast<WCHAR>(name[i]);
    }
    for (std::size_t i = 0; i < copyright.size(); ++i) {
        record.szCopyrightInfo[i] = static_cast<WCHAR>(copyright[i]);
    }
    record.u32MajorVersion = 1;
    record.u32MinorVersion = 0;
    record.u32MinInputConnections = 1;
    record.u32MaxInputConnections = 1;
    record.u32MinOutputConnections = 1;
    record.u32MaxOutputConnections = 1;
    record.u32MaxInstances = 0xFFFFFFFF;
    record.u32NumAPOInterfaces = 1;
    record.iidAPOInterfaceList[0] = ownInterface;
    return record;
}

/// What input and output of mode and endpoint effects have to share.
inline constexpr std::uint32_t allMustMatch =
    published::APO_FLAG_INPLACE | published::APO_FLAG_SAMPLESPERFRAME_MUST_MATCH |
    published::APO_FLAG_FRAMESPERSECOND_MUST_MATCH | published::APO_FLAG_BITSPERSAMPLE_MUST_MATCH;
/// A stream effect may change the number of channels.
inline constexpr std::uint32_t allButChannelsMustMatch =
    allMustMatch & ~std::uint32_t{published::APO_FLAG_SAMPLESPERFRAME_MUST_MATCH};

/// {C26AD82E-B1CB-4BDF-87E9-CACD7FD6C6FD}
inline constexpr EffectClass modeEffect = {
    params::EffectKind::mode,
    recordOf({0xC26AD82E, 0xB1CB, 0x4BDF, {0x87, 0xE9, 0xCA, 0xCD, 0x7F, 0xD6, 0xC6, 0xFD}},
             published::iidOf<IKORVAMFX>, "KORVAMFX", allMustMatch),
    110};

/// {8F3540DF-18B0-4943-B916-D4A79801587D}
inline constexpr EffectClass endpointEffect = {
    params::EffectKind::endpoint,
    recordOf({0x8F3540DF, 0x18B0, 0x4943, {0xB9, 0x16, 0xD4, 0xA7, 0x98, 0x01, 0x58, 0x7D}},
             published::iidOf<IKORVAEFX>, "KORVAEFX", allMustMatch),
    112};

/// {F71CA881-A2E0-43D1-9B8D-CEF14AA0D58D}
inline constexpr EffectClass streamEffect = {
    params::EffectKind::stream,
    recordOf({0xF71CA881, 0xA2E0, 0x43D1, {0x9B, 0x8D, 0xCE, 0xF1, 0x4A, 0xA0, 0xD5, 0x8D}},
             published::iidOf<IKORVASFX>, "KORVASFX", allButChannelsMustMatch),
    111};

/// In the order in which they are registered.
inline constexpr std::array<const EffectClass*, 3> effectClasses = {&modeEffect, &endpointEffect,
                                                                    &streamEffect};

}  // namespace korva::apo
