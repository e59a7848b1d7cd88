#include "korva/host/media_type.h"

#include <cstring>

namespace korva::tool {
namespace {

constexpr WORD sampleBytes = sizeof(float);
constexpr DWORD allParts = 0xE;  // encoding, numbers, and what follows them

WAVEFORMATEXTENSIBLE waveOf(const SoundFormat& format) noexcept {
    WAVEFORMATEXTENSIBLE wave{};
    wave.Format.wFormatTag = WAVE_FORMAT_EXTENSIBLE;
    wave.Format.nChannels = static_cast<WORD>(format.channels);
    wave.Format.nSamplesPerSec = format.sampleRate;
    wave.Format.nBlockAlign = static_cast<WORD>(format.channels * sampleBytes);
    wave.Format.nAvgBytesPerSec = format.sampleRate * wave.Format.nBlockAlign;
    wave.Format.wBitsPerSample = 8 * sampleBytes;
    wave.Format.cbSize = sizeof(WAVEFORMATEXTENSIBLE) - sizeof(WAVEFORMATEX);
    wave.Samples.wValidBitsPerSample = 8 * sampleBytes;
    wave.dwChannelMask = format.mask;
    wave.SubFormat = published::ieeeFloatFormat;
    return wave;
}

}  // namespace

MediaType::MediaType(const SoundFormat& format) noexcept : wave(waveOf(format)) {}

HRESULT MediaType::IsCompressedFormat(BOOL* compressed) {
    if (compressed == nullptr) {
        return published::nullPointer;
    }
    *compressed = 0;
    return published::ok;
}

HRESULT MediaType::IsEqual(published::IAudioMediaType* other, DWORD* flags) {
    if (other == nullptr || flags == nullptr) {
        return published::nullPointer;
    }
    const WAVEFORMATEX* const format = other->GetAudioFormat();
    const bool isEqual = format != nullptr && format->cbSize == wave.Format.cbSize &&
                         std::memcmp(format, &wave, sizeof wave) == 0;
    *flags = isEqual ? allParts : 0;
    return isEqual ? published::ok : published::okButNo;
}

HRESULT MediaType::GetUncompressedAudioFormat(published::UNCOMPRESSEDAUDIOFORMAT* format) {
    if (format == nullptr) {
        return published::nullPointer;
    }
    *format = {.guidFormatType = wave.SubFormat,
               .dwSamplesPerFrame = wave.Format.nChannels,
               .dwBytesPerSampleContainer = sampleBytes,
               .dwValidBitsPerSample = wave.Samples.wValidBitsPerSample,
               .fFramesPerSecond = static_cast<float>(wave.Format.nSamplesPerSec),
               .dwChannelMask = wave.dwChannelMask};
    return published::ok;
}

}  // namespace korva::tool
