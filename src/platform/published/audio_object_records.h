// The audio engine's published records that tell of an audio object and set one up. No header of mingw-w64
// has them, so they are declared here, once for both systems.
#pragma once

#include <cstddef>
#include <cstdint>

#include "platform/published/audio_services.h"
#include "platform/published/device_interfaces.h"
#include "platform/published/property_interfaces.h"

namespace korva::published {

/// A time in units of 100 ns.
using HNSTIME = std::int64_t;

/// What an audio object asks of its connections, as bits.
enum APO_FLAG : std::uint32_t {
    APO_FLAG_NONE = 0,
    APO_FLAG_INPLACE = 0x1,                     ///< Output may be in the input's buffer.
    APO_FLAG_SAMPLESPERFRAME_MUST_MATCH = 0x2,  ///< Channels of input and output.
    APO_FLAG_FRAMESPERSECOND_MUST_MATCH = 0x4,  ///< Their rates.
    APO_FLAG_BITSPERSAMPLE_MUST_MATCH = 0x8,    ///< Their samples' widths.
    APO_FLAG_MIXER = 0x10                       ///< Many inputs become one output.
};

/// What an audio object is registered as. More interfaces than one follow the record.
struct APO_REG_PROPERTIES {
    CLSID clsid;
    std::uint32_t Flags;  ///< Of `APO_FLAG`.
    WCHAR szFriendlyName[256];
    WCHAR szCopyrightInfo[256];
    UINT32 u32MajorVersion;
    UINT32 u32MinorVersion;
    UINT32 u32MinInputConnections;
    UINT32 u32MaxInputConnections;
    UINT32 u32MinOutputConnections;
    UINT32 u32MaxOutputConnections;
    UINT32 u32MaxInstances;
    UINT32 u32NumAPOInterfaces;
    IID iidAPOInterfaceList[1];
};
static_assert(sizeof(APO_REG_PROPERTIES) == 1092);
static_assert(offsetof(APO_REG_PROPERTIES, Flags) == 16);
static_assert(offsetof(APO_REG_PROPERTIES, szFriendlyName) == 20);
static_assert(offsetof(APO_REG_PROPERTIES, szCopyrightInfo) == 532);
static_assert(offsetof(APO_REG_PROPERTIES, u32MajorVersion) == 1044);
static_assert(offsetof(APO_REG_PROPERTIES, u32MinorVersion) == 1048);
static_assert(offsetof(APO_REG_PROPERTIES, u32MinInputConnections) == 1052);
static_assert(offsetof(APO_REG_PROPERTIES, u32MaxInputConnections) == 1056);
static_assert(offsetof(APO_REG_PROPERTIES, u32MinOutputConnections) == 1060);
static_assert(offsetof(APO_REG_PROPERTIES, u32MaxOutputConnections) == 1064);
static_assert(offsetof(APO_REG_PROPERTIES, u32MaxInstances) == 1068);
static_assert(offsetof(APO_REG_PROPERTIES, u32NumAPOInterfaces) == 1072);
static_assert(offsetof(APO_REG_PROPERTIES, iidAPOInterfaceList) == 1076);

/// What each record for `Initialize` begins with.
struct APOInitBaseStruct {
    UINT32 cbSize;  ///< Of the whole record.
    CLSID clsid;    ///< Of the object.
};
static_assert(sizeof(APOInitBaseStruct) == 20 && offsetof(APOInitBaseStruct, clsid) == 4);

/// The first generation.
struct APOInitSystemEffects {
    APOInitBaseStruct APOInit;
    IPropertyStore* pAPOEndpointProperties;
    IPropertyStore* pAPOSystemEffectsProperties;
    void* pReserved;
    IMMDeviceCollection* pDeviceCollection;
};
static_assert(sizeof(APOInitSystemEffects) == 56);

/// The second: it knows the stream's mode.
struct APOInitSystemEffects2 {
    APOInitBaseStruct APOInit;
    IPropertyStore* pAPOEndpointProperties;
    IPropertyStore* pAPOSystemEffectsProperties;
    void* pReserved;
    IMMDeviceCollection* pDeviceCollection;  ///< The endpoint comes last.
    UINT nSoftwareIoDeviceInCollection;
    UINT nSoftwareIoConnectorIndex;
    GUID AudioProcessingMode;
    BOOL InitializeForDiscoveryOnly;
};
static_assert(sizeof(APOInitSystemEffects2) == 88);
static_assert(offsetof(APOInitSystemEffects2, pAPOEndpointProperties) == 24);
static_assert(offsetof(APOInitSystemEffects2, pAPOSystemEffectsProperties) == 32);
static_assert(offsetof(APOInitSystemEffects2, pDeviceCollection) == 48);
static_assert(offsetof(APOInitSystemEffects2, AudioProcessingMode) == 64);
static_assert(offsetof(APOInitSystemEffects2, InitializeForDiscoveryOnly) == 80);

/// The third: it brings services, and the system supplies the effects' properties. Smaller than the second.
struct APOInitSystemEffects3 {
    APOInitBaseStruct APOInit;
    IPropertyStore* pAPOEndpointProperties;
    IServiceProvider* pServiceProvider;
    IMMDeviceCollection* pDeviceCollection;  ///< The endpoint comes last.
    UINT nSoftwareIoDeviceInCollection;
    UINT nSoftwareIoConnectorIndex;
    GUID AudioProcessingMode;
    BOOL InitializeForDiscoveryOnly;
};
static_assert(sizeof(APOInitSystemEffects3) == 80);
static_assert(offsetof(APOInitSystemEffects3, pAPOEndpointProperties) == 24);
static_assert(offsetof(APOInitSystemEffects3, pServiceProvider) == 32);
static_assert(offsetof(APOInitSystemEffects3, pDeviceCollection) == 40);
static_assert(offsetof(APOInitSystemEffects3, AudioProcessingMode) == 56);
static_assert(offsetof(APOInitSystemEffects3, InitializeForDiscoveryOnly) == 72);

enum AUDIO_SYSTEMEFFECT_STATE : std::uint32_t {
    AUDIO_SYSTEMEFFECT_STATE_OFF = 0,
    AUDIO_SYSTEMEFFECT_STATE_ON = 1
};

/// An effect that the system may turn off and on.
struct AUDIO_SYSTEMEFFECT {
    GUID id;
    BOOL canSetState;
    AUDIO_SYSTEMEFFECT_STATE state;
};
static_assert(sizeof(AUDIO_SYSTEMEFFECT) == 24 && offsetof(AUDIO_SYSTEMEFFECT, canSetState) == 16);
static_assert(offsetof(AUDIO_SYSTEMEFFECT, state) == 20);

/// What a stream is for, AUDIO_SIGNALPROCESSINGMODE_...
namespace processing_mode {
inline constexpr GUID defaultMode = {
    0xC18E2F7E, 0x933D, 0x4965, {0xB7, 0xD1, 0x1E, 0xEF, 0x22, 0x8D, 0x2A, 0xF3}};
inline constexpr GUID communications = {
    0x98951333, 0xB9CD, 0x48B1, {0xA0, 0xA3, 0xFF, 0x40, 0x68, 0x2D, 0x73, 0xF7}};
inline constexpr GUID speech = {0xFC1CFC9B, 0xB9D6, 0x4CFA, {0xB5, 0xE0, 0x4B, 0xB2, 0x16, 0x68, 0x78, 0xB2}};
inline constexpr GUID notification = {
    0x9CF2A70B, 0xF377, 0x403B, {0xBD, 0x6B, 0x36, 0x08, 0x63, 0xE0, 0x35, 0x5C}};
inline constexpr GUID media = {0x4780004E, 0x7133, 0x41D8, {0x8C, 0x74, 0x66, 0x0D, 0xAD, 0xD2, 0xC0, 0xEE}};
inline constexpr GUID movie = {0xB26FEB0D, 0xEC94, 0x477C, {0x94, 0x94, 0xD1, 0xAB, 0x8E, 0x75, 0x3F, 0x6E}};
inline constexpr GUID raw = {0x9E90EA20, 0xB493, 0x4FD1, {0xA1, 0xA8, 0x7E, 0x13, 0x61, 0xA9, 0x56, 0xCF}};
}  // namespace processing_mode

}  // namespace korva::published
