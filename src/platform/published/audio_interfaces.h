// The audio engine's published interfaces that an audio object's core meets. No header of mingw-w64 has them,
// so they are declared here, once for both systems.
#pragma once

#include "native/wave_formats.h"
#include "platform/published/audio_records.h"
#include "platform/published/unknown.h"

static_assert(sizeof(WAVEFORMATEX) == 18);

namespace korva::published {

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"

/// A stream's format.
struct IAudioMediaType : public IUnknown {
    virtual HRESULT STDMETHODCALLTYPE IsCompressedFormat(BOOL* compressed) = 0;
    virtual HRESULT STDMETHODCALLTYPE IsEqual(IAudioMediaType* other, DWORD* flags) = 0;
    /// The format is the object's, and lives as long.
    virtual const WAVEFORMATEX* STDMETHODCALLTYPE GetAudioFormat() = 0;
    virtual HRESULT STDMETHODCALLTYPE GetUncompressedAudioFormat(UNCOMPRESSEDAUDIOFORMAT* format) = 0;
};

/// {4E997F73-B71F-4798-873B-ED7DFCF15B4D}
template <>
inline constexpr GUID iidOf<IAudioMediaType> = {
    0x4E997F73, 0xB71F, 0x4798, {0x87, 0x3B, 0xED, 0x7D, 0xFC, 0xF1, 0x5B, 0x4D}};

#pragma GCC diagnostic pop

}  // namespace korva::published
