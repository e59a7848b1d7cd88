#include "engine/wave_format.h"

#include <algorithm>
#include <cstdint>
#include <limits>

#include "engine/stream_format.h"

namespace korva::engine {
namespace {

using published::ieeeFloatFormat;
using published::pcmFormat;
using published::UNCOMPRESSEDAUDIOFORMAT;

constexpr WORD extensionSize = sizeof(WAVEFORMATEXTENSIBLE) - sizeof(WAVEFORMATEX);
static_assert(extensionSize == 22);

constexpr std::uint64_t greatestWord = std::numeric_limits<WORD>::max();
constexpr std::uint64_t greatestDword = std::numeric_limits<DWORD>::max();

/// The whole of an extensible format, else null.
const WAVEFORMATEXTENSIBLE* extensionOf(const WAVEFORMATEX& format) noexcept {
    const bool isWhole = format.wFormatTag == WAVE_FORMAT_EXTENSIBLE && format.cbSize >= extensionSize;
    return isWhole ? reinterpret_cast<const WAVEFORMATEXTENSIBLE*>(&format) : nullptr;
}

/// {tag-0000-0010-8000-00AA00389B71}
GUID encodingOfTag(WORD tag) noexcept {
    GUID encoding = pcmFormat;
    encoding.Data1 = tag;
    return encoding;
}

/// Five hundredths either way: whoever made the format may have rounded.
bool isRateOfBytesNear(const WAVEFORMATEX& format) noexcept {
    const std::uint64_t exact = std::uint64_t{format.nSamplesPerSec} * format.nBlockAlign;
    const std::uint64_t told = format.nAvgBytesPerSec;
    return (told > exact ? told - exact : exact - told) <= exact / 20;
}

bool hasFramesOf(const WAVEFORMATEX& format, std::uint32_t bytesPerSample) noexcept {
    return format.nChannels != 0 && format.nBlockAlign == format.nChannels * bytesPerSample &&
           isRateOfBytesNear(format);
}

bool isConsistentPcm(const WAVEFORMATEX& format) noexcept {
    const WORD bits = format.wBitsPerSample;
    return (bits == 8 || bits == 16 || bits == 24 || bits == 32) && hasFramesOf(format, bits / 8U);
}

bool isConsistentFloat(const WAVEFORMATEX& format) noexcept {
    const WORD bits = format.wBitsPerSample;
    return (bits == 32 || bits == 64) && hasFramesOf(format, bits / 8U);
}

bool isPlain(const UNCOMPRESSEDAUDIOFORMAT& format) noexcept {
    const DWORD bits = format.dwValidBitsPerSample;
    const bool fillsContainer = bits == std::uint64_t{format.dwBytesPerSampleContainer} * 8;
    const bool isKnown =
        (format.guidFormatType == ieeeFloatFormat && bits == 32) || format.guidFormatType == pcmFormat;
    return format.dwSamplesPerFrame <= 2 && format.dwChannelMask == 0 && isKnown && fillsContainer;
}

bool fits(const UNCOMPRESSEDAUDIOFORMAT& format) noexcept {
    const std::uint64_t channels = format.dwSamplesPerFrame;
    const std::uint64_t bytes = format.dwBytesPerSampleContainer;
    return channels <= greatestWord && bytes * 8 <= greatestWord && channels * bytes <= greatestWord &&
           format.dwValidBitsPerSample <= greatestWord;
}

/// What both kinds have in common.
WAVEFORMATEX commonPartOf(const UNCOMPRESSEDAUDIOFORMAT& format) noexcept {
    const DWORD rate = wholeRate(format.fFramesPerSecond);
    const DWORD frameBytes = format.dwSamplesPerFrame * format.dwBytesPerSampleContainer;
    WAVEFORMATEX common{};
    common.nChannels = static_cast<WORD>(format.dwSamplesPerFrame);
    common.nSamplesPerSec = rate;
    common.nAvgBytesPerSec = static_cast<DWORD>(std::min(std::uint64_t{rate} * frameBytes, greatestDword));
    common.nBlockAlign = static_cast<WORD>(frameBytes);
    common.wBitsPerSample = static_cast<WORD>(format.dwBytesPerSampleContainer * 8);
    return common;
}

}  // namespace

std::size_t sizeOf(const WAVEFORMATEX& format) noexcept {
    const std::size_t following = format.wFormatTag == WAVE_FORMAT_PCM ? 0 : format.cbSize;
    return sizeof(WAVEFORMATEX) + following;
}

GUID encodingOf(const WAVEFORMATEX& format) noexcept {
    const WAVEFORMATEXTENSIBLE* const extensible = extensionOf(format);
    return extensible != nullptr ? extensible->SubFormat : encodingOfTag(format.wFormatTag);
}

bool isCompressed(const WAVEFORMATEX& format) noexcept {
    const GUID encoding = encodingOf(format);
    return format.wFormatTag != 0 && !(encoding == pcmFormat) && !(encoding == ieeeFloatFormat);
}

bool isConsistent(const WAVEFORMATEX& format) noexcept {
    if (format.wFormatTag == WAVE_FORMAT_EXTENSIBLE) {
        const WAVEFORMATEXTENSIBLE* const extensible = extensionOf(format);
        if (extensible == nullptr || extensible->Samples.wValidBitsPerSample > format.wBitsPerSample) {
            return false;
        }
    }
    const GUID encoding = encodingOf(format);
    if (encoding == pcmFormat) {
        return isConsistentPcm(format);
    }
    return !(encoding == ieeeFloatFormat) || isConsistentFloat(format);
}

UNCOMPRESSEDAUDIOFORMAT uncompressedOf(const WAVEFORMATEX& format) noexcept {
    UNCOMPRESSEDAUDIOFORMAT stream{.guidFormatType = encodingOf(format),
                                   .dwSamplesPerFrame = format.nChannels,
                                   .dwBytesPerSampleContainer = format.wBitsPerSample / 8U,
                                   .dwValidBitsPerSample = format.wBitsPerSample,
                                   .fFramesPerSecond = static_cast<float>(format.nSamplesPerSec),
                                   .dwChannelMask = 0};
    if (const WAVEFORMATEXTENSIBLE* const extensible = extensionOf(format)) {
        stream.dwValidBitsPerSample = extensible->Samples.wValidBitsPerSample;
        stream.dwChannelMask = extensible->dwChannelMask;
    }
    return stream;
}

std::optional<WAVEFORMATEXTENSIBLE> waveFormatOf(const UNCOMPRESSEDAUDIOFORMAT& format) noexcept {
    if (!fits(format)) {
        return std::nullopt;
    }
    WAVEFORMATEXTENSIBLE wave{};
    wave.Format = commonPartOf(format);
    if (isPlain(format)) {
        wave.Format.wFormatTag = static_cast<WORD>(format.guidFormatType.Data1);
        return wave;
    }
    wave.Format.wFormatTag = WAVE_FORMAT_EXTENSIBLE;
    wave.Format.cbSize = extensionSize;
    wave.Samples.wValidBitsPerSample = static_cast<WORD>(format.dwValidBitsPerSample);
    wave.dwChannelMask = format.dwChannelMask;
    wave.SubFormat = format.guidFormatType;
    return wave;
}

}  // namespace korva::engine
