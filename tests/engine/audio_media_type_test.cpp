#include "engine/audio_media_type.h"

#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <thread>
#include <utility>
#include <vector>

#include "framework/ref.h"
#include "platform/published/property_interfaces.h"
#include "platform/published/results.h"
#include "tests/support/allocation_count.h"
#include "tests/support/fake_media_type.h"
#include "tests/support/wave_formats.h"

namespace korva::engine {
namespace {

using framework::Ref;
using published::IAudioMediaType;
using published::ieeeFloatFormat;
using published::pcmFormat;
using published::UNCOMPRESSEDAUDIOFORMAT;
using test::extensibleWave;
using test::FakeMediaType;
using test::floatStream;
using test::pcmStream;
using test::plainWave;

constexpr WORD unknownTag = 0x55;
constexpr DWORD data = AudioMediaType::EqualPart::data;
constexpr DWORD type = AudioMediaType::EqualPart::type;
constexpr DWORD userData = AudioMediaType::EqualPart::userData;

/// Of a format that may be read as far as `size`.
Ref<IAudioMediaType> typeIn(const WAVEFORMATEX& wave, std::size_t size, float framesPerSecond = 0,
                            bool skipCheck = false) {
    IAudioMediaType* created = nullptr;
    EXPECT_EQ(AudioMediaType::Create(&wave, static_cast<UINT32>(size), framesPerSecond, skipCheck, &created),
              published::ok);
    return Ref<IAudioMediaType>::adopt(created);
}

Ref<IAudioMediaType> typeOf(const WAVEFORMATEX& wave, float framesPerSecond = 0) {
    return typeIn(wave, sizeof(wave), framesPerSecond);
}

Ref<IAudioMediaType> typeOf(const WAVEFORMATEXTENSIBLE& wave, float framesPerSecond = 0) {
    return typeIn(wave.Format, sizeof(wave), framesPerSecond);
}

Ref<IAudioMediaType> typeOf(const UNCOMPRESSEDAUDIOFORMAT& stream) {
    IAudioMediaType* created = nullptr;
    EXPECT_EQ(AudioMediaType::Create(stream, &created), published::ok);
    return Ref<IAudioMediaType>::adopt(created);
}

/// A result other than success, with nothing created.
HRESULT failureOf(const WAVEFORMATEX* wave, std::size_t size, float framesPerSecond = 0,
                  bool skipCheck = false) {
    FakeMediaType other;
    IAudioMediaType* created = &other;
    const HRESULT result =
        AudioMediaType::Create(wave, static_cast<UINT32>(size), framesPerSecond, skipCheck, &created);
    EXPECT_EQ(created, nullptr);
    return result;
}

UNCOMPRESSEDAUDIOFORMAT streamOf(const Ref<IAudioMediaType>& object) {
    UNCOMPRESSEDAUDIOFORMAT stream{};
    EXPECT_EQ(object->GetUncompressedAudioFormat(&stream), published::ok);
    return stream;
}

/// The bytes of a format with what follows it.
std::vector<std::byte> bytesAt(const void* memory, std::size_t size) {
    const auto* bytes = static_cast<const std::byte*>(memory);
    return {bytes, bytes + size};
}

TEST(AudioMediaType, IsIUnknownAndItsInterfaceAndNothingElse) {
    const Ref<IAudioMediaType> object = typeOf(plainWave(WAVE_FORMAT_PCM, 2, 48000, 16));
    for (const GUID& id : {published::iidOf<IUnknown>, published::iidOf<IAudioMediaType>}) {
        void* found = nullptr;
        EXPECT_EQ(object->QueryInterface(id, &found), published::ok);
        EXPECT_EQ(found, object.get());
        EXPECT_EQ(object->Release(), 1U);
    }
    void* found = object.get();
    EXPECT_EQ(object->QueryInterface(published::iidOf<IPropertyStore>, &found), published::noInterface);
    EXPECT_EQ(found, nullptr);
    EXPECT_EQ(object->QueryInterface(published::iidOf<IUnknown>, nullptr), published::nullPointer);
}

TEST(AudioMediaType, BeginsWithOneReferenceAndEndsWithTheLast) {
    const std::uint64_t before = test::allocationsInUse();
    IAudioMediaType* object = typeOf(plainWave(WAVE_FORMAT_PCM, 2, 48000, 16)).giveUp();
    EXPECT_EQ(object->AddRef(), 2U);
    EXPECT_EQ(object->Release(), 1U);
    EXPECT_GT(test::allocationsInUse(), before);
    EXPECT_EQ(object->Release(), 0U);
    EXPECT_EQ(test::allocationsInUse(), before);
}

TEST(AudioMediaType, IsCountedByManyThreadsAtOnce) {
    Ref<IAudioMediaType> object = typeOf(plainWave(WAVE_FORMAT_PCM, 2, 48000, 16));
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([own = object] {
            for (int round = 0; round < 10000; ++round) {
                const auto another = Ref<IAudioMediaType>::share(own.get());
                EXPECT_EQ(int{another->GetAudioFormat()->nChannels}, 2);
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(object->AddRef(), 2U);
    EXPECT_EQ(object->Release(), 1U);
}

TEST(AudioMediaTypeCreation, WantsAPlaceForTheObjectAndAFormat) {
    const WAVEFORMATEX wave = plainWave(WAVE_FORMAT_PCM, 2, 48000, 16);
    EXPECT_EQ(AudioMediaType::Create(&wave, sizeof(wave), 0, false, nullptr), published::invalidArgument);
    EXPECT_EQ(AudioMediaType::Create(pcmStream(2, 48000), nullptr), published::invalidArgument);
    EXPECT_EQ(failureOf(nullptr, 18), published::invalidArgument);
    EXPECT_EQ(failureOf(nullptr, 18, 0, true), published::invalidArgument);
}

TEST(AudioMediaTypeCreation, RefusesAFormatThatIsLongerThanItsMemory) {
    const WAVEFORMATEX pcm = plainWave(WAVE_FORMAT_PCM, 2, 48000, 16);
    const WAVEFORMATEXTENSIBLE wave = extensibleWave(ieeeFloatFormat, 2, 48000, 32, 3);
    for (const bool skipCheck : {false, true}) {
        for (const std::size_t size : {0U, 1U, 16U, 17U}) {
            EXPECT_EQ(failureOf(&pcm, size, 0, skipCheck), published::invalidArgument) << size;
        }
        for (const std::size_t size : {0U, 17U, 18U, 39U}) {
            EXPECT_EQ(failureOf(&wave.Format, size, 0, skipCheck), published::invalidArgument) << size;
        }
    }
}

// A checker of memory sees a read past the last byte.
TEST(AudioMediaTypeCreation, ReadsNoByteBeyondTheFormat) {
    const WAVEFORMATEX pcm = plainWave(WAVE_FORMAT_PCM, 2, 48000, 16);
    WAVEFORMATEX shortOne = plainWave(WAVE_FORMAT_EXTENSIBLE, 2, 48000, 16);
    shortOne.cbSize = 3;
    for (const auto& [wave, size] : {std::pair(pcm, std::size_t{18}), std::pair(shortOne, std::size_t{21})}) {
        std::vector<std::byte> memory(size);
        std::memcpy(memory.data(), &wave, sizeof(wave));
        const auto* format = reinterpret_cast<const WAVEFORMATEX*>(memory.data());
        const Ref<IAudioMediaType> object = typeIn(*format, size, 0, true);
        EXPECT_EQ(bytesAt(object->GetAudioFormat(), size), memory);
        EXPECT_EQ(streamOf(object).dwChannelMask, 0U);
    }
}

TEST(AudioMediaTypeCreation, ChecksTheFormatUnlessItIsToldNotTo) {
    const WAVEFORMATEX odd = plainWave(WAVE_FORMAT_PCM, 2, 48000, 12);
    EXPECT_EQ(failureOf(&odd, sizeof(odd)), published::invalidArgument);
    EXPECT_EQ(streamOf(typeIn(odd, sizeof(odd), 0, true)).dwValidBitsPerSample, 12U);

    WAVEFORMATEXTENSIBLE cut = extensibleWave(pcmFormat, 2, 48000, 16, 3);
    cut.Format.cbSize = 21;
    EXPECT_EQ(failureOf(&cut.Format, sizeof(cut)), published::invalidArgument);
    EXPECT_EQ(int{typeIn(cut.Format, sizeof(cut), 0, true)->GetAudioFormat()->cbSize}, 21);
}

TEST(AudioMediaTypeCreation, RefusesARateThatCannotBeOne) {
    const WAVEFORMATEX wave = plainWave(WAVE_FORMAT_PCM, 2, 48000, 16);
    for (const float rate :
         {-1.0F, -std::numeric_limits<float>::infinity(), std::numeric_limits<float>::infinity(),
          std::numeric_limits<float>::quiet_NaN()}) {
        EXPECT_EQ(failureOf(&wave, sizeof(wave), rate, true), published::invalidArgument) << rate;
        IAudioMediaType* created = nullptr;
        EXPECT_EQ(AudioMediaType::Create(floatStream(2, rate), &created), published::invalidArgument);
        EXPECT_EQ(created, nullptr);
    }
}

TEST(AudioMediaTypeCreation, FailsForWantOfMemoryAndKeepsNothing) {
    const WAVEFORMATEX wave = plainWave(WAVE_FORMAT_PCM, 2, 48000, 16);
    const std::uint64_t before = test::allocationsInUse();
    int failures = 0;
    HRESULT result = published::outOfMemory;
    IAudioMediaType* created = nullptr;
    for (std::uint64_t allowed = 0; result == published::outOfMemory; ++allowed) {
        const test::AllocationLimit limit(allowed);
        EXPECT_EQ(created, nullptr);
        result = AudioMediaType::Create(&wave, sizeof(wave), 0, false, &created);
        failures += result == published::outOfMemory;
    }
    EXPECT_EQ(result, published::ok);
    EXPECT_GE(failures, 2);
    EXPECT_EQ(created->Release(), 0U);
    EXPECT_EQ(test::allocationsInUse(), before);
}

TEST(AudioMediaTypeCopy, IsOfTheWholeFormatAndItsOwn) {
    WAVEFORMATEX wave = plainWave(unknownTag, 2, 48000, 16);
    wave.cbSize = 4;
    std::vector<std::byte> memory(100, std::byte{0x5A});
    std::memcpy(memory.data(), &wave, sizeof(wave));
    const auto bytes = bytesAt(memory.data(), 22);
    const Ref<IAudioMediaType> object =
        typeIn(*reinterpret_cast<const WAVEFORMATEX*>(memory.data()), memory.size());
    memory.assign(memory.size(), std::byte{0xAA});
    EXPECT_EQ(bytesAt(object->GetAudioFormat(), 22), bytes);
    EXPECT_EQ(object->GetAudioFormat(), object->GetAudioFormat());
}

TEST(AudioMediaTypeCopy, OfPcmHasNothingBehindIt) {
    WAVEFORMATEX wave = plainWave(WAVE_FORMAT_PCM, 2, 48000, 16);
    wave.cbSize = 0x1234;
    const Ref<IAudioMediaType> object = typeOf(wave);
    EXPECT_EQ(int{object->GetAudioFormat()->cbSize}, 0);
    wave.cbSize = 0;
    EXPECT_EQ(bytesAt(object->GetAudioFormat(), sizeof(wave)), bytesAt(&wave, sizeof(wave)));
}

TEST(AudioMediaType, TellsWhetherItsFormatIsCompressed) {
    const auto isCompressed = [](const Ref<IAudioMediaType>& object) {
        BOOL compressed = 77;
        EXPECT_EQ(object->IsCompressedFormat(&compressed), published::ok);
        return compressed;
    };
    EXPECT_EQ(isCompressed(typeOf(plainWave(WAVE_FORMAT_PCM, 2, 48000, 16))), 0);
    EXPECT_EQ(isCompressed(typeOf(extensibleWave(ieeeFloatFormat, 2, 48000, 32, 3))), 0);
    EXPECT_EQ(isCompressed(typeOf(plainWave(0, 2, 48000, 16))), 0);
    const Ref<IAudioMediaType> compressed = typeOf(plainWave(unknownTag, 2, 48000, 0));
    EXPECT_EQ(isCompressed(compressed), 1);
    EXPECT_EQ(compressed->IsCompressedFormat(nullptr), published::nullPointer);
}

TEST(AudioMediaType, TellsTheStreamOfItsFormat) {
    const Ref<IAudioMediaType> object = typeOf(extensibleWave(ieeeFloatFormat, 6, 44100, 32, 0x60F));
    const UNCOMPRESSEDAUDIOFORMAT stream = streamOf(object);
    EXPECT_TRUE(stream.guidFormatType == ieeeFloatFormat);
    EXPECT_EQ(stream.dwSamplesPerFrame, 6U);
    EXPECT_EQ(stream.dwBytesPerSampleContainer, 4U);
    EXPECT_EQ(stream.dwValidBitsPerSample, 32U);
    EXPECT_EQ(stream.fFramesPerSecond, 44100.0F);
    EXPECT_EQ(stream.dwChannelMask, 0x60FU);
    EXPECT_EQ(object->GetUncompressedAudioFormat(nullptr), published::nullPointer);
}

TEST(AudioMediaType, TellsARateOfItsOwnInPlaceOfTheFormats) {
    const WAVEFORMATEX wave = plainWave(WAVE_FORMAT_PCM, 2, 48000, 16);
    EXPECT_EQ(streamOf(typeOf(wave)).fFramesPerSecond, 48000.0F);
    EXPECT_EQ(streamOf(typeOf(wave, -0.0F)).fFramesPerSecond, 48000.0F);
    const Ref<IAudioMediaType> object = typeOf(wave, 47999.5F);
    EXPECT_EQ(streamOf(object).fFramesPerSecond, 47999.5F);
    EXPECT_EQ(DWORD{object->GetAudioFormat()->nSamplesPerSec}, 48000U);
}

TEST(AudioMediaTypeOfAStream, HasTheShortestFormatThatSaysIt) {
    const WAVEFORMATEX floats = plainWave(WAVE_FORMAT_IEEE_FLOAT, 2, 48000, 32);
    EXPECT_EQ(bytesAt(typeOf(floatStream(2, 48000))->GetAudioFormat(), 18), bytesAt(&floats, 18));
    const WAVEFORMATEX pcm = plainWave(WAVE_FORMAT_PCM, 1, 8000, 16);
    EXPECT_EQ(bytesAt(typeOf(pcmStream(1, 8000))->GetAudioFormat(), 18), bytesAt(&pcm, 18));
    const WAVEFORMATEXTENSIBLE masked = extensibleWave(ieeeFloatFormat, 2, 48000, 32, 0x3);
    EXPECT_EQ(bytesAt(typeOf(floatStream(2, 48000, 3))->GetAudioFormat(), 40), bytesAt(&masked, 40));
}

TEST(AudioMediaTypeOfAStream, TellsItAgainAsItWas) {
    UNCOMPRESSEDAUDIOFORMAT odd = pcmStream(7, 44099.75F, 0x80000001);
    odd.guidFormatType.Data4[7] = 0x72;
    for (const UNCOMPRESSEDAUDIOFORMAT& stream : {floatStream(2, 44100.25F), pcmStream(0, 8000), odd}) {
        const UNCOMPRESSEDAUDIOFORMAT again = streamOf(typeOf(stream));
        EXPECT_EQ(bytesAt(&again, sizeof(again)), bytesAt(&stream, sizeof(stream)));
    }
}

TEST(AudioMediaTypeOfAStream, IsRefusedWhereAWaveFormatCannotSayIt) {
    FakeMediaType other;
    IAudioMediaType* created = &other;
    EXPECT_EQ(AudioMediaType::Create(floatStream(65536, 48000), &created), published::invalidArgument);
    EXPECT_EQ(created, nullptr);
}

/// What the first says of the second, in the answer and in the flags.
void expectCommon(const Ref<IAudioMediaType>& a, const Ref<IAudioMediaType>& b, DWORD expected) {
    const HRESULT result = expected == 0xE ? published::ok : published::okButNo;
    DWORD flags = 0x77;
    EXPECT_EQ(a->IsEqual(b.get(), &flags), result);
    EXPECT_EQ(flags, expected);
    flags = 0x77;
    EXPECT_EQ(b->IsEqual(a.get(), &flags), result);
    EXPECT_EQ(flags, expected);
}

TEST(AudioMediaTypeEquality, HasABitForEachPart) {
    EXPECT_EQ(data, 2U);
    EXPECT_EQ(type, 4U);
    EXPECT_EQ(userData, 8U);
}

TEST(AudioMediaTypeEquality, IsOfFormatsThatAreTheSame) {
    const Ref<IAudioMediaType> one = typeOf(extensibleWave(ieeeFloatFormat, 6, 48000, 32, 0x60F));
    expectCommon(one, one, data | type | userData);
    expectCommon(one, typeOf(extensibleWave(ieeeFloatFormat, 6, 48000, 32, 0x60F)), data | type | userData);
    expectCommon(one, typeOf(floatStream(6, 48000, 0x60F)), data | type | userData);
    const WAVEFORMATEX pcm = plainWave(WAVE_FORMAT_PCM, 2, 48000, 16);
    expectCommon(typeOf(pcm), typeOf(pcm), data | type | userData);
}

TEST(AudioMediaTypeEquality, MissesTheDataOfOtherNumbers) {
    const WAVEFORMATEX format = plainWave(unknownTag, 2, 48000, 16);
    std::array<WAVEFORMATEX, 5> others;
    others.fill(format);
    others[0].nChannels = 3;
    others[1].nSamplesPerSec = 48001;
    others[2].nAvgBytesPerSec = 192001;
    others[3].nBlockAlign = 5;
    others[4].wBitsPerSample = 17;
    for (const WAVEFORMATEX& other : others) {
        expectCommon(typeOf(format), typeOf(other), type | userData);
    }
}

TEST(AudioMediaTypeEquality, MissesTheDataOfAFinerRate) {
    const WAVEFORMATEX wave = plainWave(WAVE_FORMAT_PCM, 2, 48000, 16);
    expectCommon(typeOf(wave), typeOf(wave, 48000.5F), type | userData);
    expectCommon(typeOf(wave), typeOf(wave, 48000), data | type | userData);
}

TEST(AudioMediaTypeEquality, MissesTheTypeOfAnotherEncoding) {
    expectCommon(typeOf(plainWave(WAVE_FORMAT_PCM, 2, 48000, 32)),
                 typeOf(plainWave(WAVE_FORMAT_IEEE_FLOAT, 2, 48000, 32)), data | userData);
    // The subformat is among the user data too.
    expectCommon(typeOf(extensibleWave(pcmFormat, 2, 48000, 32, 3)),
                 typeOf(extensibleWave(ieeeFloatFormat, 2, 48000, 32, 3)), data);
}

TEST(AudioMediaTypeEquality, MissesTheUserDataOfAnotherMaskOrLength) {
    const Ref<IAudioMediaType> one = typeOf(extensibleWave(ieeeFloatFormat, 2, 48000, 32, 0x3));
    expectCommon(one, typeOf(extensibleWave(ieeeFloatFormat, 2, 48000, 32, 0x30)), data | type);
    expectCommon(one, typeOf(plainWave(WAVE_FORMAT_IEEE_FLOAT, 2, 48000, 32)), data | type);
}

TEST(AudioMediaTypeEquality, HasNothingInCommonIfAllDiffers) {
    expectCommon(typeOf(plainWave(WAVE_FORMAT_PCM, 2, 48000, 16)),
                 typeOf(extensibleWave(ieeeFloatFormat, 8, 48000, 32, 0x63F)), 0);
}

TEST(AudioMediaTypeEquality, IsAskedOfOtherPartiesTypesToo) {
    const WAVEFORMATEX wave = plainWave(WAVE_FORMAT_PCM, 2, 48000, 16);
    const Ref<IAudioMediaType> own = typeOf(wave);
    FakeMediaType other(pcmStream(2, 48000));
    other.wave = &wave;
    DWORD flags = 0;
    EXPECT_EQ(own->IsEqual(&other, &flags), published::ok);
    EXPECT_EQ(flags, data | type | userData);

    // One that can't tell its stream has the rate of its wave format.
    other.stream.fFramesPerSecond = 1;
    EXPECT_EQ(own->IsEqual(&other, &flags), published::okButNo);
    other.streamResult = published::unspecifiedFailure;
    EXPECT_EQ(own->IsEqual(&other, &flags), published::ok);
    EXPECT_EQ(other.references, 1U);
}

TEST(AudioMediaTypeEquality, IsNoneOfWhatIsMissing) {
    const Ref<IAudioMediaType> own = typeOf(plainWave(WAVE_FORMAT_PCM, 2, 48000, 16));
    DWORD flags = 0x77;
    EXPECT_EQ(own->IsEqual(nullptr, &flags), published::nullPointer);
    EXPECT_EQ(flags, 0U);
    EXPECT_EQ(own->IsEqual(own.get(), nullptr), published::nullPointer);
    FakeMediaType formless;
    flags = 0x77;
    EXPECT_EQ(own->IsEqual(&formless, &flags), published::invalidArgument);
    EXPECT_EQ(flags, 0U);
}

}  // namespace
}  // namespace korva::engine
