// A stream's format as a host announces it.
#pragma once

#include "korva/host/sound_format.h"
#include "platform/counted_object.h"
#include "platform/published/audio_interfaces.h"

namespace korva::tool {

/// 32-bit floats of a format, behind the published interface. It never changes.  [any]
class MediaType final : public platform::CountedObject<published::IAudioMediaType> {
public:
    explicit MediaType(const SoundFormat& format) noexcept;

    HRESULT STDMETHODCALLTYPE IsCompressedFormat(BOOL* compressed) override;
    /// S_OK and all flags for equal formats; else S_FALSE and none.
    HRESULT STDMETHODCALLTYPE IsEqual(published::IAudioMediaType* other, DWORD* flags) override;
    const WAVEFORMATEX* STDMETHODCALLTYPE GetAudioFormat() override { return &wave.Format; }
    HRESULT STDMETHODCALLTYPE GetUncompressedAudioFormat(published::UNCOMPRESSEDAUDIOFORMAT* format) override;

private:
    ~MediaType() override = default;

    const WAVEFORMATEXTENSIBLE wave;
};

}  // namespace korva::tool
