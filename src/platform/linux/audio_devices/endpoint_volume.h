// An endpoint's volume.
#pragma once

#include <memory>
#include <string_view>

#include "audio_devices/volume_listeners.h"
#include "platform/counted_object.h"
#include "platform/endpoint_values.h"

namespace korva::platform::devices {

/// The volume that the registry has for an endpoint, read anew by each call. There is one channel, whose
/// volume is the master's. Levels are 20 * log10 of the scalar, from -96 dB (which all lower ones count as)
/// to 0 dB.
///
/// Methods give E_POINTER for a null pointer, E_INVALIDARG for a number out of its range or none and for
/// another channel than 0, AUDCLNT_E_DEVICE_INVALIDATED once the endpoint was removed, and what else the
/// registry refuses. An endpoint that is no longer active keeps its volume.  [any, blocks]
class EndpointVolume final : public CountedObject<IAudioEndpointVolume> {
public:
    /// `endpoint` is the endpoint's open key.
    explicit EndpointVolume(RegistryKey endpoint);

    /// See `RegistryListeners`.
    HRESULT STDMETHODCALLTYPE RegisterControlChangeNotify(IAudioEndpointVolumeCallback* client) override;
    HRESULT STDMETHODCALLTYPE UnregisterControlChangeNotify(IAudioEndpointVolumeCallback* client) override;

    HRESULT STDMETHODCALLTYPE GetChannelCount(UINT* count) override;
    HRESULT STDMETHODCALLTYPE SetMasterVolumeLevel(float levelDb, LPCGUID eventContext) override;
    HRESULT STDMETHODCALLTYPE SetMasterVolumeLevelScalar(float level, LPCGUID eventContext) override;
    HRESULT STDMETHODCALLTYPE GetMasterVolumeLevel(float* levelDb) override;
    HRESULT STDMETHODCALLTYPE GetMasterVolumeLevelScalar(float* level) override;
    HRESULT STDMETHODCALLTYPE SetChannelVolumeLevel(UINT channel, float levelDb,
                                                    LPCGUID eventContext) override;
    HRESULT STDMETHODCALLTYPE SetChannelVolumeLevelScalar(UINT channel, float level,
                                                          LPCGUID eventContext) override;
    HRESULT STDMETHODCALLTYPE GetChannelVolumeLevel(UINT channel, float* levelDb) override;
    HRESULT STDMETHODCALLTYPE GetChannelVolumeLevelScalar(UINT channel, float* level) override;
    /// S_FALSE if it was so before.
    HRESULT STDMETHODCALLTYPE SetMute(BOOL muted, LPCGUID eventContext) override;
    HRESULT STDMETHODCALLTYPE GetMute(BOOL* muted) override;
    /// 51 steps, of 0.02 in the scalar.
    HRESULT STDMETHODCALLTYPE GetVolumeStepInfo(UINT* step, UINT* stepCount) override;
    HRESULT STDMETHODCALLTYPE VolumeStepUp(LPCGUID eventContext) override;
    HRESULT STDMETHODCALLTYPE VolumeStepDown(LPCGUID eventContext) override;
    /// None: there is no hardware.
    HRESULT STDMETHODCALLTYPE QueryHardwareSupport(DWORD* supportMask) override;
    HRESULT STDMETHODCALLTYPE GetVolumeRange(float* lowestDb, float* highestDb, float* stepDb) override;

private:
    ~EndpointVolume() override;

    HRESULT read(EndpointLoudness& loudness) const;
    HRESULT setScalar(float scalar, LPCGUID eventContext);
    HRESULT moveBySteps(int count, LPCGUID eventContext);
    HRESULT store(std::string_view name, const RegistryValue& value) const;

    const RegistryKey key;
    const std::shared_ptr<VolumeListeners> listeners;
};

}  // namespace korva::platform::devices
