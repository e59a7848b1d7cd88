// The audio engine's published interfaces that an audio object implements. No header of mingw-w64 has them,
// so they are declared here, once for both systems.
#pragma once

#include <cstdint>

#include "platform/published/audio_interfaces.h"
#include "platform/published/audio_notifications.h"
#include "platform/published/audio_object_records.h"

namespace korva::published {

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"

/// What an audio object is, and which formats it takes.
struct IAudioProcessingObject : public IUnknown {
    virtual HRESULT STDMETHODCALLTYPE Reset() = 0;
    /// In units of 100 ns.
    virtual HRESULT STDMETHODCALLTYPE GetLatency(HNSTIME* latency) = 0;
    /// The record is the caller's, to be freed with `CoTaskMemFree`.
    virtual HRESULT STDMETHODCALLTYPE GetRegistrationProperties(APO_REG_PROPERTIES** properties) = 0;
    /// `data` is one of the `APOInit` records, of `dataSize` bytes.
    virtual HRESULT STDMETHODCALLTYPE Initialize(UINT32 dataSize, BYTE* data) = 0;
    virtual HRESULT STDMETHODCALLTYPE IsInputFormatSupported(IAudioMediaType* opposite,
                                                             IAudioMediaType* requested,
                                                             IAudioMediaType** supported) = 0;
    virtual HRESULT STDMETHODCALLTYPE IsOutputFormatSupported(IAudioMediaType* opposite,
                                                              IAudioMediaType* requested,
                                                              IAudioMediaType** supported) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetInputChannelCount(UINT32* count) = 0;
};

/// {FD7F2B29-24D0-4B5C-B177-592C39F9CA10}
template <>
inline constexpr GUID iidOf<IAudioProcessingObject> = {
    0xFD7F2B29, 0x24D0, 0x4B5C, {0xB1, 0x77, 0x59, 0x2C, 0x39, 0xF9, 0xCA, 0x10}};

/// Begins and ends streams.
struct IAudioProcessingObjectConfiguration : public IUnknown {
    virtual HRESULT STDMETHODCALLTYPE LockForProcess(UINT32 inputCount, APO_CONNECTION_DESCRIPTOR** inputs,
                                                     UINT32 outputCount,
                                                     APO_CONNECTION_DESCRIPTOR** outputs) = 0;
    virtual HRESULT STDMETHODCALLTYPE UnlockForProcess() = 0;
};

/// {0E5ED805-ABA6-49C3-8F9A-2B8C889C4FA8}
template <>
inline constexpr GUID iidOf<IAudioProcessingObjectConfiguration> = {
    0x0E5ED805, 0xABA6, 0x49C3, {0x8F, 0x9A, 0x2B, 0x8C, 0x88, 0x9C, 0x4F, 0xA8}};

/// Processes; called on the engine's real-time thread.
struct IAudioProcessingObjectRT : public IUnknown {
    virtual void STDMETHODCALLTYPE APOProcess(UINT32 inputCount, APO_CONNECTION_PROPERTY** inputs,
                                              UINT32 outputCount, APO_CONNECTION_PROPERTY** outputs) = 0;
    virtual UINT32 STDMETHODCALLTYPE CalcInputFrames(UINT32 outputFrames) = 0;
    virtual UINT32 STDMETHODCALLTYPE CalcOutputFrames(UINT32 inputFrames) = 0;
};

/// {9E1D6A6D-DDBC-4E95-A4C7-AD64BA37846C}
template <>
inline constexpr GUID iidOf<IAudioProcessingObjectRT> = {
    0x9E1D6A6D, 0xDDBC, 0x4E95, {0xA4, 0xC7, 0xAD, 0x64, 0xBA, 0x37, 0x84, 0x6C}};

/// Marks an object as a system effect.
struct IAudioSystemEffects : public IUnknown {};

/// {5FA00F27-ADD6-499A-8A9D-6B98521FA75B}
template <>
inline constexpr GUID iidOf<IAudioSystemEffects> = {
    0x5FA00F27, 0xADD6, 0x499A, {0x8A, 0x9D, 0x6B, 0x98, 0x52, 0x1F, 0xA7, 0x5B}};

/// Tells which effects are at work.
struct IAudioSystemEffects2 : public IAudioSystemEffects {
    /// The list is the caller's, to be freed with `CoTaskMemFree`. `changed` stays the caller's.
    virtual HRESULT STDMETHODCALLTYPE GetEffectsList(LPGUID* effectIds, UINT* effectCount,
                                                     HANDLE changed) = 0;
};

/// {BAFE99D2-7436-44CE-9E0E-4D89AFBFFF56}
template <>
inline constexpr GUID iidOf<IAudioSystemEffects2> = {
    0xBAFE99D2, 0x7436, 0x44CE, {0x9E, 0x0E, 0x4D, 0x89, 0xAF, 0xBF, 0xFF, 0x56}};

/// And lets the system turn them off and on.
struct IAudioSystemEffects3 : public IAudioSystemEffects2 {
    virtual HRESULT STDMETHODCALLTYPE GetControllableSystemEffectsList(AUDIO_SYSTEMEFFECT** effects,
                                                                       UINT* effectCount, HANDLE changed) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetAudioSystemEffectState(GUID effectId,
                                                                AUDIO_SYSTEMEFFECT_STATE state) = 0;
};

/// {C58B31CD-FC6A-4255-BC1F-AD29BB0A4A17}
template <>
inline constexpr GUID iidOf<IAudioSystemEffects3> = {
    0xC58B31CD, 0xFC6A, 0x4255, {0xBC, 0x1F, 0xAD, 0x29, 0xBB, 0x0A, 0x4A, 0x17}};

/// Takes notifications of the system.
struct IAudioProcessingObjectNotifications : public IUnknown {
    /// The list is the caller's, to be freed with `CoTaskMemFree`.
    virtual HRESULT STDMETHODCALLTYPE
    GetApoNotificationRegistrationInfo(APO_NOTIFICATION_DESCRIPTOR** descriptors, DWORD* count) = 0;
    virtual void STDMETHODCALLTYPE HandleNotification(APO_NOTIFICATION* notification) = 0;
};

/// {56B0C76F-02FD-4B21-A52E-9F8219FC86E4}
template <>
inline constexpr GUID iidOf<IAudioProcessingObjectNotifications> = {
    0x56B0C76F, 0x02FD, 0x4B21, {0xA5, 0x2E, 0x9F, 0x82, 0x19, 0xFC, 0x86, 0xE4}};

#pragma GCC diagnostic pop

}  // namespace korva::published
