// An object whose core couldn't be started, as on a system without a thread left.
#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include "apo/effect_object.h"
#include "framework/ref.h"
#include "platform/published/results.h"
#include "tests/support/fake_media_type.h"
#include "tests/support/thread_count.h"

namespace korva::apo {
namespace {

using framework::Ref;
using published::APO_CONNECTION_PROPERTY;
using published::IAudioMediaType;
using test::FakeMediaType;
using test::floatStream;
using test::pcmStream;

/// Lives as long as this.
struct Coreless {
    Ref<KORVAMFX> object =
        Ref<KORVAMFX>::share(new KORVAMFX(modeEffect, nullptr, [] { return CoreThread(); }));

    HRESULT lock(FakeMediaType& format) {
        APO_CONNECTION_DESCRIPTOR input{};
        input.u32MaxFrameCount = 480;
        input.pFormat = &format;
        input.u32Signature = published::connectionDescriptorSignature;
        APO_CONNECTION_DESCRIPTOR output = input;
        APO_CONNECTION_DESCRIPTOR* inputs = &input;
        APO_CONNECTION_DESCRIPTOR* outputs = &output;
        return object->LockForProcess(1, &inputs, 1, &outputs);
    }
};

TEST(ObjectWithoutCore, IsInitializedOnce) {
    Coreless host;
    BYTE data = 0;
    EXPECT_EQ(host.object->Initialize(0, &data), published::nullPointer);
    EXPECT_EQ(host.object->Initialize(88, nullptr), published::invalidArgument);
    UINT32 count = 99;
    EXPECT_EQ(host.object->GetInputChannelCount(&count), published::notInitialized);
    EXPECT_EQ(host.object->Initialize(0, nullptr), published::ok);
    EXPECT_EQ(host.object->Initialize(1, &data), published::alreadyInitialized);
    EXPECT_EQ(host.object->GetInputChannelCount(nullptr), published::nullPointer);
    EXPECT_EQ(host.object->GetInputChannelCount(&count), published::ok);
    EXPECT_EQ(count, 0u);
}

TEST(ObjectWithoutCore, KnowsTheChannelsOfTheLastStreamThatItWasAskedFor) {
    Coreless host;
    ASSERT_EQ(host.object->Initialize(0, nullptr), published::ok);
    FakeMediaType format(floatStream(6, 48000));
    EXPECT_EQ(host.lock(format), published::unspecifiedFailure);
    UINT32 count = 0;
    EXPECT_EQ(host.object->GetInputChannelCount(&count), published::ok);
    EXPECT_EQ(count, 6u);
}

TEST(ObjectWithoutCore, CantBeLockedAndIsntLockedThen) {
    Coreless host;
    FakeMediaType format(floatStream(2, 48000));
    EXPECT_EQ(host.lock(format), published::unspecifiedFailure);
    EXPECT_EQ(host.lock(format), published::unspecifiedFailure);
    EXPECT_EQ(host.object->UnlockForProcess(), published::alreadyUnlocked);
    EXPECT_EQ(format.references, 1u);
}

TEST(ObjectWithoutCore, ChecksConnectionsAllTheSame) {
    Coreless host;
    FakeMediaType format(pcmStream(2, 48000));
    EXPECT_EQ(host.lock(format), published::formatNotSupported);
    EXPECT_EQ(host.object->LockForProcess(0, nullptr, 0, nullptr), published::connectionCountInvalid);
}

TEST(ObjectWithoutCore, TakesFormatsByItsRegistration) {
    Coreless host;
    FakeMediaType opposite(floatStream(2, 48000));
    FakeMediaType requested(floatStream(6, 48000));
    for (const auto test : {&ApoBase::IsInputFormatSupported, &ApoBase::IsOutputFormatSupported}) {
        IAudioMediaType* found = nullptr;
        EXPECT_EQ((*host.object.*test)(nullptr, &requested, &found), published::ok);
        EXPECT_EQ(Ref<IAudioMediaType>::adopt(found).get(), &requested);
        EXPECT_EQ((*host.object.*test)(&opposite, &requested, &found), published::okButNo);
        const auto suggested = Ref<IAudioMediaType>::adopt(found);
        published::UNCOMPRESSEDAUDIOFORMAT format{};
        ASSERT_EQ(suggested->GetUncompressedAudioFormat(&format), published::ok);
        EXPECT_EQ(format.dwSamplesPerFrame, 2u);
    }
}

TEST(ObjectWithoutCore, CopiesSound) {
    Coreless host;
    FakeMediaType format(floatStream(2, 48000));
    ASSERT_EQ(host.lock(format), published::unspecifiedFailure);
    const std::vector<float> samples = {0.1f, -0.2f, 0.3f, -0.4f};
    std::vector<float> played(4);
    APO_CONNECTION_PROPERTY input = {reinterpret_cast<UINT_PTR>(samples.data()), 2, published::BUFFER_VALID,
                                     published::connectionPropertySignature};
    APO_CONNECTION_PROPERTY output = {reinterpret_cast<UINT_PTR>(played.data()), 0, published::BUFFER_VALID,
                                      published::connectionPropertySignature};
    APO_CONNECTION_PROPERTY* inputs = &input;
    APO_CONNECTION_PROPERTY* outputs = &output;
    host.object->APOProcess(1, &inputs, 1, &outputs);
    EXPECT_EQ(played, samples);
    EXPECT_EQ(output.u32ValidFrameCount, 2u);
    EXPECT_EQ(output.u32BufferFlags, published::BUFFER_VALID);
}

TEST(ObjectWithoutCore, AnswersWhatNeedsNoCore) {
    Coreless host;
    EXPECT_EQ(host.object->Reset(), published::ok);
    published::HNSTIME latency = 1;
    EXPECT_EQ(host.object->GetLatency(&latency), published::ok);
    EXPECT_EQ(latency, 0);
    published::AUDIO_SYSTEMEFFECT* effects = nullptr;
    UINT effectCount = 1;
    EXPECT_EQ(host.object->GetControllableSystemEffectsList(&effects, &effectCount, nullptr), published::ok);
    EXPECT_EQ(effectCount, 0u);
    LPGUID ids = nullptr;
    EXPECT_EQ(host.object->GetEffectsList(&ids, &effectCount, nullptr), published::unspecifiedFailure);
    published::APO_NOTIFICATION_DESCRIPTOR* wishes = nullptr;
    DWORD wishCount = 0;
    EXPECT_EQ(host.object->GetApoNotificationRegistrationInfo(&wishes, &wishCount),
              published::unspecifiedFailure);
    published::APO_NOTIFICATION notification{};
    host.object->HandleNotification(&notification);
    host.object->HandleNotification(nullptr);
}

TEST(ObjectWithoutCore, HasNoThread) {
    const std::size_t before = test::threadCount();
    const Coreless host;
    EXPECT_EQ(test::threadCount(), before);
}

/// A class with a say of its own.
class OwnMind final : public ApoBase {
public:
    OwnMind() : ApoBase(modeEffect.record, nullptr, [] { return CoreThread(); }) {}

    HRESULT connectionsResult = published::ok;
    HRESULT correctionResult = published::ok;

private:
    HRESULT CheckConnections(const Connections&) override { return connectionsResult; }
    HRESULT CorrectDefaultFormat(published::UNCOMPRESSEDAUDIOFORMAT&, bool) override {
        return correctionResult;
    }
    IUnknown* ownFace() noexcept override { return static_cast<published::IAudioProcessingObject*>(this); }
};

TEST(ApoBase, LetsAClassRefuseConnectionsThatAllOthersFindRight) {
    const auto object = Ref<OwnMind>::share(new OwnMind);
    FakeMediaType format(floatStream(2, 48000));
    APO_CONNECTION_DESCRIPTOR connection{};
    connection.pFormat = &format;
    connection.u32Signature = published::connectionDescriptorSignature;
    APO_CONNECTION_DESCRIPTOR* connections = &connection;
    object->connectionsResult = published::buffersOverlap;
    EXPECT_EQ(object->LockForProcess(1, &connections, 1, &connections), published::buffersOverlap);
    object->connectionsResult = published::ok;
    EXPECT_EQ(object->LockForProcess(1, &connections, 1, &connections), published::unspecifiedFailure);
}

TEST(ApoBase, LetsAClassMakeFormatsRightByItself) {
    const auto object = Ref<OwnMind>::share(new OwnMind);
    FakeMediaType format(pcmStream(2, 48000));
    IAudioMediaType* found = nullptr;
    EXPECT_EQ(object->IsInputFormatSupported(nullptr, &format, &found), published::ok);
    EXPECT_EQ(Ref<IAudioMediaType>::adopt(found).get(), &format);
    object->correctionResult = published::notFound;
    EXPECT_EQ(object->IsInputFormatSupported(nullptr, &format, &found), published::notFound);
    EXPECT_EQ(found, nullptr);
}

}  // namespace
}  // namespace korva::apo
