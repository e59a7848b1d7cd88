#include "apo/default_formats.h"

#include "engine/audio_media_type.h"
#include "framework/ref.h"
#include "platform/published/audio_object_records.h"
#include "platform/published/results.h"

namespace korva::apo {

using framework::Ref;
using published::IAudioMediaType;
using published::UNCOMPRESSEDAUDIOFORMAT;

namespace {

constexpr DWORD mostChannels = 4096;
constexpr DWORD floatBytes = 4;
constexpr DWORD floatBits = 32;
constexpr float lowestRate = 10.0f;
constexpr float highestRate = 384000.0f;

template <class T>
bool put(T& field, const T& value) noexcept {
    if (field == value) {
        return false;
    }
    field = value;
    return true;
}

DWORD channelsNear(DWORD channels) noexcept {
    return channels == 0 ? 1 : channels > mostChannels ? mostChannels : channels;
}

// What is no number is the lowest rate.
float rateNear(float rate) noexcept {
    return !(rate >= lowestRate) ? lowestRate : rate > highestRate ? highestRate : rate;
}

/// Gives `format` what both sides have to share. Whether that changed anything.
bool matchTo(const UNCOMPRESSEDAUDIOFORMAT& opposite, std::uint32_t flags,
             UNCOMPRESSEDAUDIOFORMAT& format) noexcept {
    bool isChanged = false;
    if ((flags & published::APO_FLAG_SAMPLESPERFRAME_MUST_MATCH) != 0) {
        isChanged |= put(format.dwSamplesPerFrame, opposite.dwSamplesPerFrame);
        isChanged |= put(format.dwChannelMask, opposite.dwChannelMask);
    }
    if ((flags & published::APO_FLAG_BITSPERSAMPLE_MUST_MATCH) != 0) {
        isChanged |= put(format.dwBytesPerSampleContainer, opposite.dwBytesPerSampleContainer);
        isChanged |= put(format.dwValidBitsPerSample, opposite.dwValidBitsPerSample);
    }
    if ((flags & published::APO_FLAG_FRAMESPERSECOND_MUST_MATCH) != 0) {
        isChanged |= put(format.fFramesPerSecond, opposite.fFramesPerSecond);
    }
    return isChanged;
}

/// The format that a type tells, made right; S_FALSE if it had to be.
HRESULT readCorrected(IAudioMediaType& type, bool isOutput, const FormatCorrection& correct,
                      UNCOMPRESSEDAUDIOFORMAT& format) {
    const HRESULT result = type.GetUncompressedAudioFormat(&format);
    return published::failed(result) ? result : correct(format, isOutput);
}

}  // namespace

HRESULT correctFormat(UNCOMPRESSEDAUDIOFORMAT& format) noexcept {
    bool isChanged = put(format.guidFormatType, published::ieeeFloatFormat);
    isChanged |= put(format.dwSamplesPerFrame, channelsNear(format.dwSamplesPerFrame));
    isChanged |= put(format.dwBytesPerSampleContainer, floatBytes);
    isChanged |= put(format.dwValidBitsPerSample, floatBits);
    isChanged |= put(format.fFramesPerSecond, rateNear(format.fFramesPerSecond));
    return isChanged ? published::okButNo : published::ok;
}

HRESULT testDefaultFormat(std::uint32_t flags, bool isOutput, const FormatCorrection& correct,
                          IAudioMediaType* opposite, IAudioMediaType* requested,
                          IAudioMediaType** supported) {
    if (supported == nullptr) {
        return published::nullPointer;
    }
    *supported = nullptr;
    if (requested == nullptr) {
        return published::nullPointer;
    }
    UNCOMPRESSEDAUDIOFORMAT other{};
    if (opposite != nullptr) {
        const HRESULT result = readCorrected(*opposite, !isOutput, correct, other);
        if (result != published::ok) {
            return published::failed(result) ? result : published::formatNotSupported;
        }
    }
    UNCOMPRESSEDAUDIOFORMAT format{};
    const HRESULT result = readCorrected(*requested, isOutput, correct, format);
    if (published::failed(result)) {
        return result;
    }
    const bool isChanged = opposite != nullptr && matchTo(other, flags, format);
    if (result == published::ok && !isChanged) {
        *supported = Ref<IAudioMediaType>::share(requested).giveUp();
        return published::ok;
    }
    const HRESULT created = engine::AudioMediaType::Create(format, supported);
    return created == published::ok ? published::okButNo : created;
}

}  // namespace korva::apo
