// The faces of an object, and what each method asks of the core.
#include "apo/apo_base.h"

#include <cstring>

#include "apo/default_formats.h"
#include "platform/memory_lock.h"
#include "platform/published/results.h"
#include "platform/published_call.h"
#include "rt/realtime.h"

namespace korva::apo {

using published::IAudioMediaType;
using published::iidOf;

namespace {

// The code of the real-time path, once for all objects. A process that may not lock memory plays all the
// same.
void keepRealtimeCodeInMemory() {
    [[maybe_unused]] static const bool isLocked = [] {
        const rt::CodeRange code = rt::realtimeCode();
        return platform::lockMemory(code.start, code.size);
    }();
}

std::size_t sizeOf(const APO_REG_PROPERTIES& record) noexcept {
    return sizeof(record) + sizeof(IID) * (record.u32NumAPOInterfaces - 1);
}

}  // namespace

ApoBase::ApoBase(const APO_REG_PROPERTIES& properties, IUnknown* outer, const CoreStarter& startCore)
    : identity(outer != nullptr ? *outer : ownUnknown),
      registrationProperties(properties),
      core(startCore()) {
    processor = core.realtime();
    keepRealtimeCodeInMemory();
}

HRESULT ApoBase::OwnUnknown::QueryInterface(REFIID id, void** object) {
    // Of a part of another object, this face is what its creator knows it by.
    if (object != nullptr && id == iidOf<IUnknown> && &owner.identity != this) {
        AddRef();
        *object = static_cast<IUnknown*>(this);
        return published::ok;
    }
    return owner.queryFace(id, object);
}

platform::ReferenceCount ApoBase::OwnUnknown::AddRef() {
    return count.fetch_add(1, std::memory_order_relaxed) + 1;
}

// While the object goes, a reference taken and dropped must not end it once more.
platform::ReferenceCount ApoBase::OwnUnknown::Release() {
    const std::uint32_t left = count.fetch_sub(1, std::memory_order_acq_rel) - 1;
    if (left == 0) {
        constexpr std::uint32_t ending = 1U << 30;
        count.store(ending, std::memory_order_relaxed);
        delete &owner;
    }
    return left;
}

HRESULT ApoBase::QueryInterface(REFIID id, void** object) {
    return identity.QueryInterface(id, object);
}

platform::ReferenceCount ApoBase::AddRef() {
    return identity.AddRef();
}

platform::ReferenceCount ApoBase::Release() {
    return identity.Release();
}

HRESULT ApoBase::queryFace(REFIID id, void** object) {
    if (object == nullptr) {
        return published::nullPointer;
    }
    *object = faceOf(id);
    if (*object == nullptr) {
        return published::noInterface;
    }
    identity.AddRef();
    return published::ok;
}

// One face serves the three generations of system effects.
void* ApoBase::faceOf(REFIID id) noexcept {
    if (id == iidOf<IUnknown> || id == registrationProperties.iidAPOInterfaceList[0]) {
        return ownFace();
    }
    if (id == iidOf<published::IAudioSystemEffects> || id == iidOf<published::IAudioSystemEffects2> ||
        id == iidOf<published::IAudioSystemEffects3>) {
        return static_cast<published::IAudioSystemEffects3*>(this);
    }
    if (id == iidOf<published::IAudioProcessingObjectNotifications>) {
        return static_cast<published::IAudioProcessingObjectNotifications*>(this);
    }
    if (id == iidOf<published::IAudioProcessingObjectRT>) {
        return static_cast<published::IAudioProcessingObjectRT*>(this);
    }
    if (id == iidOf<published::IAudioProcessingObject>) {
        return static_cast<published::IAudioProcessingObject*>(this);
    }
    if (id == iidOf<published::IAudioProcessingObjectConfiguration>) {
        return static_cast<published::IAudioProcessingObjectConfiguration*>(this);
    }
    return nullptr;
}

HRESULT ApoBase::Reset() {
    core.call([](engine::EffectCore&) { return published::ok; });
    return published::ok;
}

HRESULT ApoBase::GetLatency(published::HNSTIME* latency) {
    if (latency == nullptr) {
        return published::nullPointer;
    }
    *latency = 0;
    return published::ok;
}

HRESULT ApoBase::GetRegistrationProperties(APO_REG_PROPERTIES** properties) {
    if (properties == nullptr) {
        return published::nullPointer;
    }
    const std::size_t size = sizeOf(registrationProperties);
    void* const copy = CoTaskMemAlloc(size);
    *properties = static_cast<APO_REG_PROPERTIES*>(copy);
    if (copy == nullptr) {
        return published::outOfMemory;
    }
    std::memcpy(copy, &registrationProperties, size);
    return published::ok;
}

HRESULT ApoBase::Initialize(UINT32 dataSize, BYTE* data) {
    if (!core) {
        return fallbackInitialize(dataSize, data);
    }
    return core.call([&](engine::EffectCore& object) { return object.initializeApo(dataSize, data); });
}

HRESULT ApoBase::fallbackInitialize(UINT32 dataSize, const BYTE* data) noexcept {
    if (data != nullptr && dataSize == 0) {
        return published::nullPointer;
    }
    if (data == nullptr && dataSize != 0) {
        return published::invalidArgument;
    }
    return initialized.exchange(true) ? published::alreadyInitialized : published::ok;
}

HRESULT ApoBase::IsInputFormatSupported(IAudioMediaType* opposite, IAudioMediaType* requested,
                                        IAudioMediaType** supported) {
    if (!core) {
        return testByRegistration(false, opposite, requested, supported);
    }
    return core.call([&](engine::EffectCore& object) {
        return object.isInputFormatSupported(opposite, requested, supported);
    });
}

HRESULT ApoBase::IsOutputFormatSupported(IAudioMediaType* opposite, IAudioMediaType* requested,
                                         IAudioMediaType** supported) {
    if (!core) {
        return testByRegistration(true, opposite, requested, supported);
    }
    return core.call([&](engine::EffectCore& object) {
        return object.isOutputFormatSupported(opposite, requested, supported);
    });
}

HRESULT ApoBase::testByRegistration(bool isOutput, IAudioMediaType* opposite, IAudioMediaType* requested,
                                    IAudioMediaType** supported) {
    return platform::publishedCall([&] {
        return testDefaultFormat(
            registrationProperties.Flags, isOutput,
            [this](published::UNCOMPRESSEDAUDIOFORMAT& format, bool ofOutput) {
                return CorrectDefaultFormat(format, ofOutput);
            },
            opposite, requested, supported);
    });
}

HRESULT ApoBase::CorrectDefaultFormat(published::UNCOMPRESSEDAUDIOFORMAT& format, bool) {
    return correctFormat(format);
}

HRESULT ApoBase::GetInputChannelCount(UINT32* count) {
    if (!initialized) {
        return published::notInitialized;
    }
    if (count == nullptr) {
        return published::nullPointer;
    }
    *count = samplesPerFrame.get();
    return published::ok;
}

HRESULT ApoBase::GetEffectsList(LPGUID* effectIds, UINT* effectCount, HANDLE changed) {
    return core.call(
        [&](engine::EffectCore& object) { return object.getEffectsList(effectIds, effectCount, changed); });
}

HRESULT ApoBase::GetControllableSystemEffectsList(published::AUDIO_SYSTEMEFFECT** effects, UINT* effectCount,
                                                  HANDLE) {
    if (effects != nullptr) {
        *effects = nullptr;
    }
    if (effectCount != nullptr) {
        *effectCount = 0;
    }
    return published::ok;
}

HRESULT ApoBase::SetAudioSystemEffectState(GUID, published::AUDIO_SYSTEMEFFECT_STATE) {
    return published::ok;
}

HRESULT ApoBase::GetApoNotificationRegistrationInfo(published::APO_NOTIFICATION_DESCRIPTOR** descriptors,
                                                    DWORD* count) {
    return core.call([&](engine::EffectCore& object) {
        return object.getApoNotificationRegistrationInfo(descriptors, count);
    });
}

void ApoBase::HandleNotification(published::APO_NOTIFICATION* notification) {
    if (notification == nullptr) {
        return;
    }
    core.call([&](engine::EffectCore& object) {
        object.onApoNotification(*notification);
        return published::ok;
    });
}

}  // namespace korva::apo
