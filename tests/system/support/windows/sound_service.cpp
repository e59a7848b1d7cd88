#include "tests/system/support/sound_service.h"

#include <windows.h>

#include <objbase.h>

#include <cstring>
#include <optional>
#include <stdexcept>
#include <string>

#include "platform/counted_object.h"
#include "platform/endpoint_values.h"
#include "platform/published/class_factory.h"
#include "platform/published/device_interfaces.h"
#include "platform/published/results.h"
#include "platform/registry.h"
#include "platform/unicode.h"

namespace korva::test {
namespace {

using platform::RegistryKey;

constexpr CLSID enumeratorClass = {
    0xBCDE0395, 0xE52F, 0x467C, {0x8E, 0x3D, 0xC4, 0x57, 0x92, 0x91, 0x69, 0x2E}};

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"  // published interfaces have no destructor

;

class Volume final : public platform::CountedObject<IAudioEndpointVolume> {
public:
    explicit Volume(RegistryKey its) : endpoint(std::move(its)) {}

    HRESULT STDMETHODCALLTYPE GetMasterVolumeLevelScalar(float* level) override {
        platform::EndpointLoudness loudness;
        const auto result = platform::readEndpointLoudness(endpoint, loudness);
        *level = loudness.scalar;
        return result == 0 ? published::ok : published::unspecifiedFailure;
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

private:
    const RegistryKey endpoint;
};

class Device final : public platform::CountedObject<IMMDevice> {
public:
    Device(const platform::EndpointPlace& place, RegistryKey its)
        : id(platform::toWide(platform::endpointIdOf(place))), endpoint(std::move(its)) {}

    HRESULT STDMETHODCALLTYPE Activate(REFIID face, DWORD, PROPVARIANT*, void** object) override {
        *object = nullptr;
        if (!(face == published::iidOf<IAudioEndpointVolume>)) {
            return published::noInterface;
        }
        *object = static_cast<IAudioEndpointVolume*>(new Volume(endpoint));
        return published::ok;
    }
    HRESULT STDMETHODCALLTYPE OpenPropertyStore(DWORD, IPropertyStore** store) override {
        *store = nullptr;
        return published::notImplemented;
    }
    HRESULT STDMETHODCALLTYPE GetId(LPWSTR* copy) override {
        const std::size_t size = (id.size() + 1) * sizeof(WCHAR);
        *copy = static_cast<LPWSTR>(CoTaskMemAlloc(size));
        std::memcpy(*copy, id.c_str(), size);
        return published::ok;
    }
    HRESULT STDMETHODCALLTYPE GetState(DWORD* state) override {
        std::uint32_t read = 0;
        const auto result = platform::readEndpointState(endpoint, read);
        *state = read;
        return result == 0 ? published::ok : published::unspecifiedFailure;
    }

private:
    const platform::WideString id;
    const RegistryKey endpoint;
};

class Enumerator final : public platform::CountedObject<IMMDeviceEnumerator> {
public:
    HRESULT STDMETHODCALLTYPE EnumAudioEndpoints(EDataFlow, DWORD, IMMDeviceCollection**) override {
        return published::notImplemented;
    }
    HRESULT STDMETHODCALLTYPE GetDefaultAudioEndpoint(EDataFlow, ERole, IMMDevice**) override {
        return published::notImplemented;
    }
    HRESULT STDMETHODCALLTYPE GetDevice(LPCWSTR id, IMMDevice** device) override {
        *device = nullptr;
        const auto place = platform::endpointPlaceOf(platform::toUtf8(id));
        RegistryKey key;
        if (!place ||
            RegistryKey::root(platform::RegistryRoot::localMachine)
                    .open(platform::endpointPath(*place), platform::RegistryAccess::read, key) != 0) {
            return published::notFound;
        }
        *device = new Device(*place, std::move(key));
        return published::ok;
    }
    HRESULT STDMETHODCALLTYPE RegisterEndpointNotificationCallback(IMMNotificationClient*) override {
        return published::ok;
    }
    HRESULT STDMETHODCALLTYPE UnregisterEndpointNotificationCallback(IMMNotificationClient*) override {
        return published::ok;
    }
};

class Factory final : public platform::CountedObject<IClassFactory> {
public:
    HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown*, REFIID id, void** object) override {
        auto* const made = new Enumerator;
        const HRESULT result = made->QueryInterface(id, object);
        made->Release();
        return result;
    }
    HRESULT STDMETHODCALLTYPE LockServer(BOOL) override { return published::ok; }
};

#pragma GCC diagnostic pop

}  // namespace

struct SoundService::State {
    State() {
        auto* const factory = new Factory;
        const HRESULT result = CoRegisterClassObject(enumeratorClass, factory, CLSCTX_INPROC_SERVER,
                                                     REGCLS_MULTIPLEUSE, &cookie);
        factory->Release();
        if (published::failed(result)) {
            throw std::runtime_error("no sound service: " + std::to_string(result));
        }
    }
    ~State() { CoRevokeClassObject(cookie); }
    State(const State&) = delete;
    State& operator=(const State&) = delete;

    DWORD cookie = 0;
};

SoundService::SoundService() : state(std::make_unique<State>()) {}
SoundService::~SoundService() = default;

}  // namespace korva::test
