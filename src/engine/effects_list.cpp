// What an object says of its effects, and of the notifications that it wants.
#include <algorithm>
#include <cassert>
#include <span>

#include "engine/effect_core.h"
#include "engine/notification_wishes.h"
#include "params/effect_keys.h"
#include "platform/published/results.h"

namespace korva::engine {
namespace {

/// {6F64ADxx-8211-11E2-8C70-2C27D7F001FA}: AUDIO_EFFECT_TYPE_...
constexpr GUID effectWith(std::uint32_t last) {
    return {0x6F64AD00 | last, 0x8211, 0x11E2, {0x8C, 0x70, 0x2C, 0x27, 0xD7, 0xF0, 0x01, 0xFA}};
}
constexpr GUID automaticGainControl = effectWith(0xC0);
constexpr GUID equalizer = effectWith(0xC3);
constexpr GUID loudnessEqualizer = effectWith(0xC4);
constexpr GUID bassBoost = effectWith(0xC5);
constexpr GUID virtualSurround = effectWith(0xC6);
constexpr GUID speakerFill = effectWith(0xC8);
constexpr GUID bassManagement = effectWith(0xCA);
constexpr GUID speakerProtection = effectWith(0xCC);
constexpr GUID speakerCompensation = effectWith(0xCD);
constexpr GUID dynamicRangeCompression = effectWith(0xCE);

constexpr GUID streamEffects[] = {speakerFill, virtualSurround};
constexpr GUID modeEffects[] = {automaticGainControl, equalizer,      loudnessEqualizer,      bassBoost,
                                virtualSurround,      bassManagement, dynamicRangeCompression};
constexpr GUID endpointEffects[] = {speakerProtection, speakerCompensation};

/// Whatever engine runs, and whichever of them it has.
std::span<const GUID> effectsOf(std::uint32_t type) {
    if (!params::isEffectKind(type)) {
        return {};
    }
    switch (static_cast<params::EffectKind>(type)) {
        case params::EffectKind::stream:
            return streamEffects;
        case params::EffectKind::mode:
            return modeEffects;
        case params::EffectKind::endpoint:
            return endpointEffects;
    }
    return {};
}

}  // namespace

// A list that the host wants told of is one that it takes over: the event comes first.
HRESULT EffectCore::getEffectsList(LPGUID* effectIds, UINT* effectCount, HANDLE changed) {
    assert(isOwnerThread());
    if (effectIds == nullptr || effectCount == nullptr) {
        return published::nullPointer;
    }
    if (changed != nullptr) {
        if (const HRESULT result = effectsChanged.duplicate(changed); published::failed(result)) {
            return result;
        }
    }
    *effectIds = nullptr;
    *effectCount = 0;
    const std::span<const GUID> effects = isRaw() ? std::span<const GUID>() : effectsOf(effectType);
    if (effects.empty()) {
        return published::ok;
    }
    auto* const list = static_cast<GUID*>(CoTaskMemAlloc(effects.size_bytes()));
    if (list == nullptr) {
        return published::outOfMemory;
    }
    std::ranges::copy(effects, list);
    *effectIds = list;
    *effectCount = static_cast<UINT>(effects.size());
    return published::ok;
}

HRESULT EffectCore::getApoNotificationRegistrationInfo(published::APO_NOTIFICATION_DESCRIPTOR** descriptors,
                                                       DWORD* count) const {
    assert(isOwnerThread());
    return notificationsOf(notifyingDevice.get(), descriptors, count);
}

}  // namespace korva::engine
