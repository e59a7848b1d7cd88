#include "audio_devices/endpoint_volume.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "platform/published_call.h"
#include "platform/registry_values.h"

namespace korva::platform::devices {
namespace {

constexpr float lowestLevelDb = -96.0F;
constexpr float highestLevelDb = 0.0F;
constexpr float levelStepDb = 1.0F;
constexpr int lastStep = 50;

float levelOf(float scalar) {
    return scalar <= 0.0F ? lowestLevelDb : std::max(20.0F * std::log10(scalar), lowestLevelDb);
}

float scalarOf(float levelDb) {
    return std::pow(10.0F, levelDb / 20.0F);
}

bool isLevel(float levelDb) {
    return levelDb >= lowestLevelDb && levelDb <= highestLevelDb;
}

int stepOf(float scalar) {
    return static_cast<int>(std::lround(scalar * static_cast<float>(lastStep)));
}

HRESULT resultOf(RegistryResult result) noexcept {
    return result == registry_result::keyDeleted ? published::deviceInvalidated : hresultOf(result);
}

}  // namespace

EndpointVolume::EndpointVolume(RegistryKey endpoint)
    : key(std::move(endpoint)), listeners(std::make_shared<VolumeListeners>(key)) {}

EndpointVolume::~EndpointVolume() {
    listeners->removeAll();
}

HRESULT EndpointVolume::RegisterControlChangeNotify(IAudioEndpointVolumeCallback* client) {
    return client == nullptr ? published::nullPointer
                             : publishedCall([&] { return resultOf(listeners->add(*client)); });
}

HRESULT EndpointVolume::UnregisterControlChangeNotify(IAudioEndpointVolumeCallback* client) {
    return client == nullptr ? published::nullPointer
                             : publishedCall([&] { return listeners->remove(*client); });
}

HRESULT EndpointVolume::GetChannelCount(UINT* count) {
    if (count == nullptr) {
        return published::nullPointer;
    }
    *count = 1;
    return published::ok;
}

HRESULT EndpointVolume::SetMasterVolumeLevel(float levelDb, LPCGUID eventContext) {
    return isLevel(levelDb) ? setScalar(scalarOf(levelDb), eventContext) : published::invalidArgument;
}

HRESULT EndpointVolume::SetMasterVolumeLevelScalar(float level, LPCGUID eventContext) {
    return isVolume(level) ? setScalar(level, eventContext) : published::invalidArgument;
}

HRESULT EndpointVolume::GetMasterVolumeLevel(float* levelDb) {
    const HRESULT result = GetMasterVolumeLevelScalar(levelDb);
    if (result == published::ok) {
        *levelDb = levelOf(*levelDb);
    }
    return result;
}

HRESULT EndpointVolume::GetMasterVolumeLevelScalar(float* level) {
    if (level == nullptr) {
        return published::nullPointer;
    }
    EndpointLoudness now;
    const HRESULT result = read(now);
    if (result == published::ok) {
        *level = now.scalar;
    }
    return result;
}

HRESULT EndpointVolume::SetChannelVolumeLevel(UINT channel, float levelDb, LPCGUID eventContext) {
    return channel == 0 ? SetMasterVolumeLevel(levelDb, eventContext) : published::invalidArgument;
}

HRESULT EndpointVolume::SetChannelVolumeLevelScalar(UINT channel, float level, LPCGUID eventContext) {
    return channel == 0 ? SetMasterVolumeLevelScalar(level, eventContext) : published::invalidArgument;
}

HRESULT EndpointVolume::GetChannelVolumeLevel(UINT channel, float* levelDb) {
    return channel == 0 ? GetMasterVolumeLevel(levelDb) : published::invalidArgument;
}

HRESULT EndpointVolume::GetChannelVolumeLevelScalar(UINT channel, float* level) {
    return channel == 0 ? GetMasterVolumeLevelScalar(level) : published::invalidArgument;
}

HRESULT EndpointVolume::SetMute(BOOL muted, LPCGUID eventContext) {
    return publishedCall([&] {
        EndpointLoudness loudness;
        if (const HRESULT result = read(loudness); result != published::ok) {
            return result;
        }
        if (loudness.isMuted == (muted != 0)) {
            return published::okButNo;
        }
        loudness.isMuted = !loudness.isMuted;
        listeners->announce(loudness, eventContext);
        return store(endpoint_value::muted, numberValue(loudness.isMuted ? 1 : 0));
    });
}

HRESULT EndpointVolume::GetMute(BOOL* muted) {
    if (muted == nullptr) {
        return published::nullPointer;
    }
    EndpointLoudness now;
    const HRESULT result = read(now);
    if (result == published::ok) {
        *muted = now.isMuted ? 1 : 0;
    }
    return result;
}

HRESULT EndpointVolume::GetVolumeStepInfo(UINT* step, UINT* stepCount) {
    if (step == nullptr || stepCount == nullptr) {
        return published::nullPointer;
    }
    EndpointLoudness now;
    const HRESULT result = read(now);
    if (result == published::ok) {
        *step = static_cast<UINT>(stepOf(now.scalar));
        *stepCount = lastStep + 1;
    }
    return result;
}

HRESULT EndpointVolume::VolumeStepUp(LPCGUID eventContext) {
    return moveBySteps(1, eventContext);
}

HRESULT EndpointVolume::VolumeStepDown(LPCGUID eventContext) {
    return moveBySteps(-1, eventContext);
}

HRESULT EndpointVolume::QueryHardwareSupport(DWORD* supportMask) {
    if (supportMask == nullptr) {
        return published::nullPointer;
    }
    *supportMask = 0;
    return published::ok;
}

HRESULT EndpointVolume::GetVolumeRange(float* lowestDb, float* highestDb, float* stepDb) {
    if (lowestDb == nullptr || highestDb == nullptr || stepDb == nullptr) {
        return published::nullPointer;
    }
    *lowestDb = lowestLevelDb;
    *highestDb = highestLevelDb;
    *stepDb = levelStepDb;
    return published::ok;
}

HRESULT EndpointVolume::read(EndpointLoudness& loudness) const {
    return publishedCall([&] { return resultOf(readEndpointLoudness(key, loudness)); });
}

HRESULT EndpointVolume::setScalar(float scalar, LPCGUID eventContext) {
    return publishedCall([&] {
        EndpointLoudness loudness;
        if (const HRESULT result = read(loudness); result != published::ok || loudness.scalar == scalar) {
            return result;
        }
        loudness.scalar = scalar;
        listeners->announce(loudness, eventContext);
        return store(endpoint_value::volume, volumeValue(scalar));
    });
}

HRESULT EndpointVolume::moveBySteps(int count, LPCGUID eventContext) {
    EndpointLoudness now;
    if (const HRESULT result = read(now); result != published::ok) {
        return result;
    }
    const int step = std::clamp(stepOf(now.scalar) + count, 0, lastStep);
    return setScalar(static_cast<float>(step) / static_cast<float>(lastStep), eventContext);
}

HRESULT EndpointVolume::store(std::string_view name, const RegistryValue& value) const {
    RegistryKey writable;
    RegistryResult result = key.open("", RegistryAccess::readWrite, writable);
    if (result == registry_result::success) {
        result = writable.setValue(name, value.type, value.data);
    }
    return resultOf(result);
}

}  // namespace korva::platform::devices
