// The published interfaces of audio devices and of their volume.
#pragma once

#include "native/device_interfaces.h"
#include "platform/published/property_interfaces.h"

namespace korva::published {

/// {D666063F-1587-4E43-81F1-B948E807363F}
template <>
inline constexpr GUID iidOf<IMMDevice> = {
    0xD666063F, 0x1587, 0x4E43, {0x81, 0xF1, 0xB9, 0x48, 0xE8, 0x07, 0x36, 0x3F}};

/// {1BE09788-6894-4089-8586-9A2A6C265AC5}
template <>
inline constexpr GUID iidOf<IMMEndpoint> = {
    0x1BE09788, 0x6894, 0x4089, {0x85, 0x86, 0x9A, 0x2A, 0x6C, 0x26, 0x5A, 0xC5}};

/// {0BD7A1BE-7A1A-44DB-8397-CC5392387B5E}
template <>
inline constexpr GUID iidOf<IMMDeviceCollection> = {
    0x0BD7A1BE, 0x7A1A, 0x44DB, {0x83, 0x97, 0xCC, 0x53, 0x92, 0x38, 0x7B, 0x5E}};

/// {A95664D2-9614-4F35-A746-DE8DB63617E6}
template <>
inline constexpr GUID iidOf<IMMDeviceEnumerator> = {
    0xA95664D2, 0x9614, 0x4F35, {0xA7, 0x46, 0xDE, 0x8D, 0xB6, 0x36, 0x17, 0xE6}};

/// {5CDF2C82-841E-4546-9722-0CF74078229A}
template <>
inline constexpr GUID iidOf<IAudioEndpointVolume> = {
    0x5CDF2C82, 0x841E, 0x4546, {0x97, 0x22, 0x0C, 0xF7, 0x40, 0x78, 0x22, 0x9A}};

/// {657804FA-D6AD-4496-8A60-352752AF4F89}
template <>
inline constexpr GUID iidOf<IAudioEndpointVolumeCallback> = {
    0x657804FA, 0xD6AD, 0x4496, {0x8A, 0x60, 0x35, 0x27, 0x52, 0xAF, 0x4F, 0x89}};

/// Where an object's code may run, as `Activate` is told.
inline constexpr DWORD classContextInProcess = 1;  ///< CLSCTX_INPROC_SERVER
inline constexpr DWORD classContextAll = 23;       ///< CLSCTX_ALL

/// What a property store is opened for.
inline constexpr DWORD accessRead = 0;       ///< STGM_READ
inline constexpr DWORD accessReadWrite = 2;  ///< STGM_READWRITE

/// A device's state; as bits where several are asked for.
inline constexpr DWORD deviceStateActive = 1;      ///< DEVICE_STATE_ACTIVE
inline constexpr DWORD deviceStateDisabled = 2;    ///< DEVICE_STATE_DISABLED
inline constexpr DWORD deviceStateNotPresent = 4;  ///< DEVICE_STATE_NOTPRESENT
inline constexpr DWORD deviceStateUnplugged = 8;   ///< DEVICE_STATE_UNPLUGGED
inline constexpr DWORD deviceStatesAll = 15;       ///< DEVICE_STATEMASK_ALL

}  // namespace korva::published

static_assert(sizeof(AUDIO_VOLUME_NOTIFICATION_DATA) == 32);
static_assert(offsetof(AUDIO_VOLUME_NOTIFICATION_DATA, fMasterVolume) == 20);
static_assert(eRender == 0 && eCapture == 1 && eAll == 2);
