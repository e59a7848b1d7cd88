// Audio devices and their volume for Linux: the published methods in their order.
#pragma once

#include "native/property_interfaces.h"

enum EDataFlow : std::int32_t { eRender = 0, eCapture = 1, eAll = 2 };
enum ERole : std::int32_t { eConsole = 0, eMultimedia = 1, eCommunications = 2 };

/// What a device's volume is now. There may be more channels behind it than its type says.
struct AUDIO_VOLUME_NOTIFICATION_DATA {
    GUID guidEventContext;
    BOOL bMuted;
    float fMasterVolume;  ///< 0.0 to 1.0, as listeners hear it.
    UINT nChannels;
    float afChannelVolumes[1];
};

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"

struct IMMDevice : public IUnknown {
    virtual HRESULT STDMETHODCALLTYPE Activate(REFIID id, DWORD classContext, PROPVARIANT* parameters,
                                               void** object) = 0;
    virtual HRESULT STDMETHODCALLTYPE OpenPropertyStore(DWORD accessMode, IPropertyStore** store) = 0;
    /// The text is the caller's, to be freed with `CoTaskMemFree`.
    virtual HRESULT STDMETHODCALLTYPE GetId(LPWSTR* id) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetState(DWORD* state) = 0;
};

struct IMMEndpoint : public IUnknown {
    virtual HRESULT STDMETHODCALLTYPE GetDataFlow(EDataFlow* dataFlow) = 0;
};

struct IMMDeviceCollection : public IUnknown {
    virtual HRESULT STDMETHODCALLTYPE GetCount(UINT* count) = 0;
    virtual HRESULT STDMETHODCALLTYPE Item(UINT index, IMMDevice** device) = 0;
};

struct IMMNotificationClient : public IUnknown {
    virtual HRESULT STDMETHODCALLTYPE OnDeviceStateChanged(LPCWSTR id, DWORD state) = 0;
    virtual HRESULT STDMETHODCALLTYPE OnDeviceAdded(LPCWSTR id) = 0;
    virtual HRESULT STDMETHODCALLTYPE OnDeviceRemoved(LPCWSTR id) = 0;
    virtual HRESULT STDMETHODCALLTYPE OnDefaultDeviceChanged(EDataFlow dataFlow, ERole role, LPCWSTR id) = 0;
    virtual HRESULT STDMETHODCALLTYPE OnPropertyValueChanged(LPCWSTR id, const PROPERTYKEY key) = 0;
};

struct IMMDeviceEnumerator : public IUnknown {
    virtual HRESULT STDMETHODCALLTYPE EnumAudioEndpoints(EDataFlow dataFlow, DWORD stateMask,
                                                         IMMDeviceCollection** devices) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetDefaultAudioEndpoint(EDataFlow dataFlow, ERole role,
                                                              IMMDevice** device) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetDevice(LPCWSTR id, IMMDevice** device) = 0;
    virtual HRESULT STDMETHODCALLTYPE RegisterEndpointNotificationCallback(IMMNotificationClient* client) = 0;
    virtual HRESULT STDMETHODCALLTYPE
    UnregisterEndpointNotificationCallback(IMMNotificationClient* client) = 0;
};

struct IAudioEndpointVolumeCallback : public IUnknown {
    virtual HRESULT STDMETHODCALLTYPE OnNotify(AUDIO_VOLUME_NOTIFICATION_DATA* data) = 0;
};

/// Levels are in dB, scalars from 0.0 to 1.0.
struct IAudioEndpointVolume : public IUnknown {
    virtual HRESULT STDMETHODCALLTYPE RegisterControlChangeNotify(IAudioEndpointVolumeCallback* client) = 0;
    virtual HRESULT STDMETHODCALLTYPE UnregisterControlChangeNotify(IAudioEndpointVolumeCallback* client) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetChannelCount(UINT* count) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetMasterVolumeLevel(float levelDb, LPCGUID eventContext) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetMasterVolumeLevelScalar(float level, LPCGUID eventContext) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetMasterVolumeLevel(float* levelDb) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetMasterVolumeLevelScalar(float* level) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetChannelVolumeLevel(UINT channel, float levelDb,
                                                            LPCGUID eventContext) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetChannelVolumeLevelScalar(UINT channel, float level,
                                                                  LPCGUID eventContext) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetChannelVolumeLevel(UINT channel, float* levelDb) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetChannelVolumeLevelScalar(UINT channel, float* level) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetMute(BOOL muted, LPCGUID eventContext) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetMute(BOOL* muted) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetVolumeStepInfo(UINT* step, UINT* stepCount) = 0;
    virtual HRESULT STDMETHODCALLTYPE VolumeStepUp(LPCGUID eventContext) = 0;
    virtual HRESULT STDMETHODCALLTYPE VolumeStepDown(LPCGUID eventContext) = 0;
    virtual HRESULT STDMETHODCALLTYPE QueryHardwareSupport(DWORD* supportMask) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetVolumeRange(float* lowestDb, float* highestDb, float* stepDb) = 0;
};

#pragma GCC diagnostic pop
