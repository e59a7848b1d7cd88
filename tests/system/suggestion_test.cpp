// The media types that an object suggests.
#include <gtest/gtest.h>

#include <cstring>

#include "tests/system/format_wish.h"

namespace korva::test {
namespace {

using published::IAudioMediaType;
using published::UNCOMPRESSEDAUDIOFORMAT;

constexpr DWORD allEqual = 0xE;

class Suggestion : public testing::Test {
protected:
    /// What is suggested for whole numbers.
    [[nodiscard]] ComPointer<IAudioMediaType> suggestionFor(DWORD channels, float rate = 48000,
                                                            DWORD mask = 0) {
        return askForFormat(object, nullptr, wholes(channels, rate, mask)).supported;
    }

    HostedLibrary library;
    HostedObject object{library, modeClass};
};

TEST_F(Suggestion, HasOneReferenceWhichIsTheCallers) {
    auto type = suggestionFor(2);
    EXPECT_EQ(referencesTo(*type), 1U);
    EXPECT_EQ(type.release(), 0U);
}

TEST_F(Suggestion, IsAMediaTypeOfOneIdentityAndNothingElse) {
    const auto type = suggestionFor(2);
    EXPECT_EQ(query<IAudioMediaType>(*type, iid::mediaType).get(), type.get());
    EXPECT_EQ(query<IUnknown>(*type, iid::unknown).get(), static_cast<IUnknown*>(type.get()));
    for (const IID& other : {iid::nobodys, iid::processingObject, iid::classFactory}) {
        void* found = this;
        EXPECT_EQ(type->QueryInterface(other, &found), result::noInterface);
        EXPECT_EQ(found, nullptr);
    }
    EXPECT_EQ(type->QueryInterface(iid::mediaType, nullptr), result::nullPointer);
    EXPECT_EQ(referencesTo(*type), 1U);
}

TEST_F(Suggestion, IsNotCompressed) {
    const auto type = suggestionFor(2);
    BOOL compressed = 1;
    EXPECT_EQ(type->IsCompressedFormat(&compressed), result::ok);
    EXPECT_EQ(compressed, 0);
    EXPECT_TRUE(published::failed(type->IsCompressedFormat(nullptr)));
}

TEST_F(Suggestion, TellsItsFormatTheSameWhicheverWayItIsAsked) {
    const auto type = suggestionFor(6, 96000, 0x3F);
    const WAVEFORMATEX* const wave = type->GetAudioFormat();
    ASSERT_NE(wave, nullptr);
    EXPECT_EQ(wave->nChannels, 6);
    EXPECT_EQ(wave->nSamplesPerSec, 96000U);
    EXPECT_EQ(wave->wBitsPerSample, 32);
    EXPECT_EQ(wave->nBlockAlign, 24);
    EXPECT_EQ(wave->nAvgBytesPerSec, 96000U * 24);
    UNCOMPRESSEDAUDIOFORMAT told{};
    EXPECT_EQ(type->GetUncompressedAudioFormat(&told), result::ok);
    const UNCOMPRESSEDAUDIOFORMAT expected = floats(6, 96000, 0x3F);
    EXPECT_EQ(std::memcmp(&told, &expected, sizeof(told)), 0);
    EXPECT_EQ(type->GetUncompressedAudioFormat(nullptr), result::nullPointer);
}

TEST_F(Suggestion, OfManyChannelsOrWithSpeakersIsAnExtensibleFormat) {
    for (const auto& [channels, mask] : {std::pair<DWORD, DWORD>{6, 0}, {2, 0x3}, {8, 0x63F}}) {
        const auto type = suggestionFor(channels, 48000, mask);
        const WAVEFORMATEX* const wave = type->GetAudioFormat();
        EXPECT_EQ(wave->wFormatTag, 0xFFFE);
        EXPECT_EQ(wave->cbSize, 22);
    }
}

TEST_F(Suggestion, LivesLongerThanItsObject) {
    const auto type = suggestionFor(2);
    EXPECT_EQ(object.release(), 0U);
    UNCOMPRESSEDAUDIOFORMAT told{};
    EXPECT_EQ(type->GetUncompressedAudioFormat(&told), result::ok);
    EXPECT_EQ(told.dwSamplesPerFrame, 2U);
    EXPECT_EQ(type->GetAudioFormat()->nChannels, 2);
}

TEST_F(Suggestion, EqualsAnotherOfTheSameFormat) {
    const auto one = suggestionFor(2);
    const auto two = suggestionFor(2);
    DWORD flags = 0;
    EXPECT_EQ(one->IsEqual(two.get(), &flags), result::ok);
    EXPECT_EQ(flags, allEqual);
    EXPECT_EQ(one->IsEqual(one.get(), &flags), result::ok);
    EXPECT_EQ(flags, allEqual);
}

TEST_F(Suggestion, OfAnotherRateDiffersInItsNumbersOnly) {
    const auto one = suggestionFor(2, 48000);
    const auto two = suggestionFor(2, 44100);
    DWORD flags = 0;
    EXPECT_EQ(one->IsEqual(two.get(), &flags), result::no);
    EXPECT_EQ(flags, 0xCU);
    EXPECT_EQ(two->IsEqual(one.get(), &flags), result::no);
    EXPECT_EQ(flags, 0xCU);
}

TEST_F(Suggestion, OfOtherSpeakersDiffersInWhatFollowsTheNumbers) {
    const auto one = suggestionFor(4, 48000, 0x33);
    const auto two = suggestionFor(4, 48000, 0x603);
    DWORD flags = 0;
    EXPECT_EQ(one->IsEqual(two.get(), &flags), result::no);
    EXPECT_EQ(flags & 8U, 0U);
    EXPECT_EQ(flags & 4U, 4U);
}

TEST_F(Suggestion, EqualsNothingThatIsMissing) {
    const auto type = suggestionFor(2);
    DWORD flags = 0xFFFF;
    EXPECT_EQ(type->IsEqual(nullptr, &flags), result::nullPointer);
    EXPECT_EQ(flags, 0U);
    EXPECT_EQ(type->IsEqual(type.get(), nullptr), result::nullPointer);
    EXPECT_EQ(type->IsEqual(nullptr, nullptr), result::nullPointer);
}

TEST_F(Suggestion, EqualsNoForeignTypeWithoutAFormat) {
    const auto type = suggestionFor(2);
    OwnMediaType foreign(floats(2));
    DWORD flags = 0xFFFF;
    EXPECT_EQ(type->IsEqual(&foreign, &flags), result::badArgument);
    EXPECT_EQ(flags, 0U);
}

TEST_F(Suggestion, LocksAStream) {
    const auto type = suggestionFor(2);
    Connection input(*type);
    Connection output(*type);
    EXPECT_EQ(object.lock(input, output), result::ok);
    EXPECT_EQ(referencesTo(*type), 1U) << "a stream keeps no format";
}

}  // namespace
}  // namespace korva::test
