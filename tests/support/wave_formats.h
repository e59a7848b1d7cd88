// Wave formats to begin with.
#pragma once

#include "platform/published/audio_interfaces.h"

namespace korva::test {

/// A format whose numbers agree, with nothing behind it.
[[nodiscard]] inline WAVEFORMATEX plainWave(WORD tag, WORD channels, DWORD rate, WORD bits) {
    WAVEFORMATEX format{};
    format.wFormatTag = tag;
    format.nChannels = channels;
    format.nSamplesPerSec = rate;
    format.nBlockAlign = static_cast<WORD>(channels * (bits / 8));
    format.nAvgBytesPerSec = rate * format.nBlockAlign;
    format.wBitsPerSample = bits;
    return format;
}

/// The same, extensible, with all bits valid.
[[nodiscard]] inline WAVEFORMATEXTENSIBLE extensibleWave(const GUID& encoding, WORD channels, DWORD rate,
                                                         WORD bits, DWORD mask) {
    WAVEFORMATEXTENSIBLE format{};
    format.Format = plainWave(WAVE_FORMAT_EXTENSIBLE, channels, rate, bits);
    format.Format.cbSize = 22;
    format.Samples.wValidBitsPerSample = bits;
    format.dwChannelMask = mask;
    format.SubFormat = encoding;
    return format;
}

}  // namespace korva::test
