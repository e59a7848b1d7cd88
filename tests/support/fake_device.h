// Audio devices that do what a test says.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstring>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "framework/object_class.h"
#include "framework/published_object.h"
#include "framework/ref.h"
#include "platform/mutex.h"
#include "platform/published/device_interfaces.h"
#include "platform/unicode.h"

namespace korva::test {

/// A volume that knows one number.  [any]
class FakeVolume final
    : public framework::PublishedObject<FakeVolume, framework::ObjectBase, IAudioEndpointVolume> {
public:
    HRESULT STDMETHODCALLTYPE GetMasterVolumeLevelScalar(float* level) override {
        *level = scalar;
        return scalarResult;
    }

    HRESULT STDMETHODCALLTYPE RegisterControlChangeNotify(IAudioEndpointVolumeCallback*) override {
        return published::notImplemented;
    }
    HRESULT STDMETHODCALLTYPE UnregisterControlChangeNotify(IAudioEndpointVolumeCallback*) override {
        return published::notImplemented;
    }
    HRESULT STDMETHODCALLTYPE GetChannelCount(UINT*) override { return published::notImplemented; }
    HRESULT STDMETHODCALLTYPE SetMasterVolumeLevel(float, LPCGUID) override {
        return published::notImplemented;
    }
    HRESULT STDMETHODCALLTYPE SetMasterVolumeLevelScalar(float, LPCGUID) override {
        return published::notImplemented;
    }
    HRESULT STDMETHODCALLTYPE GetMasterVolumeLevel(float*) override { return published::notImplemented; }
    HRESULT STDMETHODCALLTYPE SetChannelVolumeLevel(UINT, float, LPCGUID) override {
        return published::notImplemented;
    }
    HRESULT STDMETHODCALLTYPE SetChannelVolumeLevelScalar(UINT, float, LPCGUID) override {
        return published::notImplemented;
    }
    HRESULT STDMETHODCALLTYPE GetChannelVolumeLevel(UINT, float*) override {
        return published::notImplemented;
    }
    HRESULT STDMETHODCALLTYPE GetChannelVolumeLevelScalar(UINT, float*) override {
        return published::notImplemented;
    }
    HRESULT STDMETHODCALLTYPE SetMute(BOOL, LPCGUID) override { return published::notImplemented; }
    HRESULT STDMETHODCALLTYPE GetMute(BOOL*) override { return published::notImplemented; }
    HRESULT STDMETHODCALLTYPE GetVolumeStepInfo(UINT*, UINT*) override { return published::notImplemented; }
    HRESULT STDMETHODCALLTYPE VolumeStepUp(LPCGUID) override { return published::notImplemented; }
    HRESULT STDMETHODCALLTYPE VolumeStepDown(LPCGUID) override { return published::notImplemented; }
    HRESULT STDMETHODCALLTYPE QueryHardwareSupport(DWORD*) override { return published::notImplemented; }
    HRESULT STDMETHODCALLTYPE GetVolumeRange(float*, float*, float*) override {
        return published::notImplemented;
    }

    std::atomic<float> scalar{1.0f};
    std::atomic<HRESULT> scalarResult{published::ok};
};

/// Tells an identifier, and notes what it is asked to activate. Any thread may use it, one at a time.
class FakeDevice final : public framework::PublishedObject<FakeDevice, framework::ObjectBase, IMMDevice> {
public:
    /// One call of `Activate`.
    struct Activation {
        GUID interfaceId;
        DWORD classContext;
        VARTYPE parameterType;
        GUID parameter;
    };

    /// Without an identifier, `GetId` fails.
    explicit FakeDevice(std::optional<std::string> deviceId) : identifier(std::move(deviceId)) {}

    HRESULT STDMETHODCALLTYPE Activate(REFIID id, DWORD classContext, PROPVARIANT* parameters,
                                       void** object) override {
        if (id == published::iidOf<IAudioEndpointVolume>) {
            ++volumeActivations;
            volumeClassContext = classContext;
            return give(volume.get(), object);
        }
        ++activations;
        lastActivation = {id, classContext, parameters->vt, *parameters->puuid};
        // The caller has to go by the result alone.
        *object = activated;
        if (published::succeeded(activationResult) && activated != nullptr) {
            activated->AddRef();
        }
        return activationResult;
    }
    HRESULT STDMETHODCALLTYPE OpenPropertyStore(DWORD accessMode, IPropertyStore** store) override {
        openedFor.push_back(accessMode);
        *store = nullptr;
        const bool isRefused = accessMode == published::accessReadWrite && propertiesAreReadOnly;
        void* opened = nullptr;
        const HRESULT result = isRefused ? published::unspecifiedFailure : give(properties.get(), &opened);
        *store = static_cast<IPropertyStore*>(opened);
        return result;
    }
    HRESULT STDMETHODCALLTYPE GetId(LPWSTR* id) override {
        *id = nullptr;
        if (!identifier) {
            return published::unspecifiedFailure;
        }
        const platform::WideString text = platform::toWide(*identifier);
        const std::size_t bytes = (text.size() + 1) * sizeof(WCHAR);
        *id = static_cast<LPWSTR>(CoTaskMemAlloc(bytes));
        std::memcpy(*id, text.c_str(), bytes);
        return published::ok;
    }
    HRESULT STDMETHODCALLTYPE GetState(DWORD* current) override {
        *current = state;
        return stateResult;
    }

    /// What `Activate` gives, whatever it is asked for.
    published::IAudioSystemEffectsPropertyStore* activated = nullptr;
    HRESULT activationResult = published::noInterface;

    int activations = 0;  ///< Of all but the volume.
    Activation lastActivation{};

    DWORD state = published::deviceStateActive;
    HRESULT stateResult = published::ok;

    framework::Ref<IAudioEndpointVolume> volume;  ///< Without one, its activation fails.
    int volumeActivations = 0;
    DWORD volumeClassContext = 0;

    framework::Ref<IPropertyStore> properties;  ///< Without any, opening them fails.
    bool propertiesAreReadOnly = false;         ///< To open them for more fails.
    std::vector<DWORD> openedFor;

private:
    template <class Interface>
    static HRESULT give(Interface* given, void** object) {
        *object = given;
        if (given == nullptr) {
            return published::noInterface;
        }
        given->AddRef();
        return published::ok;
    }

    std::optional<std::string> identifier;
};

/// Knows the devices that it was given.  [any]
class FakeDevices final
    : public framework::PublishedObject<FakeDevices, framework::ObjectBase, IMMDeviceEnumerator> {
public:
    /// Takes the place of one with the same identifier; null takes it away.
    void put(const std::string& id, framework::Ref<IMMDevice> device) {
        const std::lock_guard guard(mutex);
        devices[platform::toWide(id)] = std::move(device);
    }

    HRESULT STDMETHODCALLTYPE GetDevice(LPCWSTR id, IMMDevice** device) override {
        const std::lock_guard guard(mutex);
        ++requests;
        *device = nullptr;
        const auto found = devices.find(id);
        if (found == devices.end() || !found->second) {
            return published::invalidArgument;
        }
        *device = framework::Ref<IMMDevice>(found->second).giveUp();
        return published::ok;
    }

    HRESULT STDMETHODCALLTYPE EnumAudioEndpoints(EDataFlow, DWORD, IMMDeviceCollection**) override {
        return published::notImplemented;
    }
    HRESULT STDMETHODCALLTYPE GetDefaultAudioEndpoint(EDataFlow, ERole, IMMDevice**) override {
        return published::notImplemented;
    }
    HRESULT STDMETHODCALLTYPE RegisterEndpointNotificationCallback(IMMNotificationClient*) override {
        return published::notImplemented;
    }
    HRESULT STDMETHODCALLTYPE UnregisterEndpointNotificationCallback(IMMNotificationClient*) override {
        return published::notImplemented;
    }

    std::atomic<int> requests{0};

private:
    platform::Mutex mutex;
    std::map<platform::WideString, framework::Ref<IMMDevice>> devices;
};

}  // namespace korva::test
