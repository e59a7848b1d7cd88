#include "engine/audio_media_type.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <optional>
#include <span>

#include "engine/wave_format.h"
#include "framework/ref.h"
#include "platform/published/results.h"
#include "platform/published_call.h"

namespace korva::engine {
namespace {

using framework::Ref;
using published::IAudioMediaType;
using published::UNCOMPRESSEDAUDIOFORMAT;

std::span<const std::byte> bytesOf(const WAVEFORMATEX& format) noexcept {
    return {reinterpret_cast<const std::byte*>(&format), sizeOf(format)};
}

// PCM has nothing behind it, which the copy says too.
std::vector<std::byte> copyOf(const WAVEFORMATEX& format) {
    const auto bytes = bytesOf(format);
    std::vector<std::byte> copy(bytes.begin(), bytes.end());
    if (format.wFormatTag == WAVE_FORMAT_PCM) {
        WAVEFORMATEX plain = format;
        plain.cbSize = 0;
        std::memcpy(copy.data(), &plain, sizeof(plain));
    }
    return copy;
}

bool isReadable(const WAVEFORMATEX* format, UINT32 size) noexcept {
    return format != nullptr && size >= sizeof(WAVEFORMATEX) && size >= sizeOf(*format);
}

bool canBeRate(float framesPerSecond) noexcept {
    return framesPerSecond >= 0 && framesPerSecond <= std::numeric_limits<float>::max();
}

bool hasSameNumbers(const WAVEFORMATEX& a, const WAVEFORMATEX& b) noexcept {
    return a.nChannels == b.nChannels && a.nSamplesPerSec == b.nSamplesPerSec &&
           a.nAvgBytesPerSec == b.nAvgBytesPerSec && a.nBlockAlign == b.nBlockAlign &&
           a.wBitsPerSample == b.wBitsPerSample;
}

bool hasSameUserData(const WAVEFORMATEX& a, const WAVEFORMATEX& b) noexcept {
    return std::ranges::equal(bytesOf(a).subspan(sizeof(a)), bytesOf(b).subspan(sizeof(b)));
}

// The rate of a type may be finer than its wave format's. What is compressed may have no such answer.
float rateOf(IAudioMediaType& type, const WAVEFORMATEX& format) {
    UNCOMPRESSEDAUDIOFORMAT stream{};
    return published::succeeded(type.GetUncompressedAudioFormat(&stream))
               ? stream.fFramesPerSecond
               : static_cast<float>(format.nSamplesPerSec);
}

}  // namespace

HRESULT AudioMediaType::Create(const WAVEFORMATEX* waveFormat, UINT32 size, float framesPerSecond,
                               bool skipCheck, IAudioMediaType** created) noexcept {
    if (created == nullptr) {
        return published::invalidArgument;
    }
    *created = nullptr;
    if (!isReadable(waveFormat, size) || !canBeRate(framesPerSecond) ||
        !(skipCheck || isConsistent(*waveFormat))) {
        return published::invalidArgument;
    }
    return platform::publishedCall([&] {
        *created = Ref<AudioMediaType>::share(new AudioMediaType(*waveFormat, framesPerSecond)).giveUp();
        return published::ok;
    });
}

// Whoever asks for a stream without channels, say, gets the type of one: nothing here can know better.
HRESULT AudioMediaType::Create(const UNCOMPRESSEDAUDIOFORMAT& stream, IAudioMediaType** created) noexcept {
    if (created == nullptr) {
        return published::invalidArgument;
    }
    *created = nullptr;
    const std::optional<WAVEFORMATEXTENSIBLE> wave = waveFormatOf(stream);
    if (!wave) {
        return published::invalidArgument;
    }
    return Create(&wave->Format, sizeof(*wave), stream.fFramesPerSecond, true, created);
}

AudioMediaType::AudioMediaType(const WAVEFORMATEX& waveFormat, float framesPerSecond)
    : isCompressed(engine::isCompressed(waveFormat) ? 1 : 0),
      format(copyOf(waveFormat)),
      overrideFramesPerSecond(framesPerSecond) {}

HRESULT AudioMediaType::QueryInterface(REFIID id, void** object) {
    if (object == nullptr) {
        return published::nullPointer;
    }
    *object = nullptr;
    if (!(id == published::iidOf<IUnknown>)&&!(id == published::iidOf<IAudioMediaType>)) {
        return published::noInterface;
    }
    *object = static_cast<IAudioMediaType*>(this);
    AddRef();
    return published::ok;
}

platform::ReferenceCount AudioMediaType::AddRef() {
    return referenceCount.fetch_add(1, std::memory_order_relaxed) + 1;
}

// Whoever deletes sees what all the others read before they let go.
platform::ReferenceCount AudioMediaType::Release() {
    const std::uint32_t left = referenceCount.fetch_sub(1, std::memory_order_acq_rel) - 1;
    if (left == 0) {
        delete this;
    }
    return left;
}

HRESULT AudioMediaType::IsCompressedFormat(BOOL* answer) {
    if (answer == nullptr) {
        return published::nullPointer;
    }
    *answer = static_cast<BOOL>(isCompressed);
    return published::ok;
}

HRESULT AudioMediaType::IsEqual(IAudioMediaType* other, DWORD* flags) {
    if (flags == nullptr) {
        return published::nullPointer;
    }
    *flags = 0;
    if (other == nullptr) {
        return published::nullPointer;
    }
    const WAVEFORMATEX* const theirs = other->GetAudioFormat();
    if (theirs == nullptr) {
        return published::invalidArgument;
    }
    if (encodingOf(wave()) == encodingOf(*theirs)) {
        *flags |= EqualPart::type;
    }
    if (hasSameNumbers(wave(), *theirs) && uncompressed().fFramesPerSecond == rateOf(*other, *theirs)) {
        *flags |= EqualPart::data;
    }
    if (hasSameUserData(wave(), *theirs)) {
        *flags |= EqualPart::userData;
    }
    return *flags == EqualPart::all ? published::ok : published::okButNo;
}

const WAVEFORMATEX* AudioMediaType::GetAudioFormat() {
    return &wave();
}

HRESULT AudioMediaType::GetUncompressedAudioFormat(UNCOMPRESSEDAUDIOFORMAT* answer) {
    if (answer == nullptr) {
        return published::nullPointer;
    }
    *answer = uncompressed();
    return published::ok;
}

const WAVEFORMATEX& AudioMediaType::wave() const noexcept {
    return *reinterpret_cast<const WAVEFORMATEX*>(format.data());
}

UNCOMPRESSEDAUDIOFORMAT AudioMediaType::uncompressed() const noexcept {
    UNCOMPRESSEDAUDIOFORMAT stream = uncompressedOf(wave());
    if (overrideFramesPerSecond != 0) {
        stream.fFramesPerSecond = overrideFramesPerSecond;
    }
    return stream;
}

}  // namespace korva::engine
