#include "tests/system/windows/noted_devices.h"

#include <windows.h>

#include <objbase.h>

#include <atomic>
#include <stdexcept>
#include <utility>

#include "platform/audio_devices.h"
#include "platform/counted_object.h"
#include "platform/published/class_factory.h"
#include "platform/published/device_interfaces.h"
#include "platform/published/results.h"
#include "tests/system/support/com_pointer.h"
#include "tests/system/support/known_ids.h"

namespace korva::test {
namespace {

constexpr CLSID enumeratorClass = {
    0xBCDE0395, 0xE52F, 0x467C, {0x8E, 0x3D, 0xC4, 0x57, 0x92, 0x91, 0x69, 0x2E}};
constexpr IID effectStores = {0x302AE7F9, 0xD7E0, 0x43E4, {0x97, 0x1B, 0x1F, 0x82, 0x93, 0x61, 0x3D, 0x2A}};

struct Notes {
    std::atomic<int> setsAskedFor{0};
    std::atomic<int> otherActivations{0};
};

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"  // published interfaces have no destructor

;

class NotedDevice final : public platform::CountedObject<IMMDevice> {
public:
    NotedDevice(ComPointer<IMMDevice> device, Notes& itsNotes) : real(std::move(device)), notes(itsNotes) {}

    HRESULT STDMETHODCALLTYPE Activate(REFIID id, DWORD context, PROPVARIANT* parameters,
                                       void** object) override {
        const bool asksForSets = id == effectStores && parameters != nullptr && parameters->vt == VT_CLSID &&
                                 *parameters->puuid == effectsContext;
        ++(asksForSets ? notes.setsAskedFor : notes.otherActivations);
        return real->Activate(id, context, parameters, object);
    }
    HRESULT STDMETHODCALLTYPE OpenPropertyStore(DWORD access, IPropertyStore** store) override {
        return real->OpenPropertyStore(access, store);
    }
    HRESULT STDMETHODCALLTYPE GetId(LPWSTR* id) override { return real->GetId(id); }
    HRESULT STDMETHODCALLTYPE GetState(DWORD* state) override { return real->GetState(state); }

private:
    ComPointer<IMMDevice> real;
    Notes& notes;
};

class NotedEnumerator final : public platform::CountedObject<IMMDeviceEnumerator> {
public:
    NotedEnumerator(IMMDeviceEnumerator& enumerator, Notes& itsNotes) : real(enumerator), notes(itsNotes) {}

    HRESULT STDMETHODCALLTYPE EnumAudioEndpoints(EDataFlow flow, DWORD states,
                                                 IMMDeviceCollection** devices) override {
        return real.EnumAudioEndpoints(flow, states, devices);
    }
    HRESULT STDMETHODCALLTYPE GetDefaultAudioEndpoint(EDataFlow flow, ERole role,
                                                      IMMDevice** device) override {
        return real.GetDefaultAudioEndpoint(flow, role, device);
    }
    HRESULT STDMETHODCALLTYPE GetDevice(LPCWSTR id, IMMDevice** device) override {
        ComPointer<IMMDevice> found;
        const HRESULT result = real.GetDevice(id, found.receive());
        *device = found ? new NotedDevice(std::move(found), notes) : nullptr;
        return result;
    }
    HRESULT STDMETHODCALLTYPE RegisterEndpointNotificationCallback(IMMNotificationClient* client) override {
        return real.RegisterEndpointNotificationCallback(client);
    }
    HRESULT STDMETHODCALLTYPE UnregisterEndpointNotificationCallback(IMMNotificationClient* client) override {
        return real.UnregisterEndpointNotificationCallback(client);
    }

private:
    IMMDeviceEnumerator& real;
    Notes& notes;
};

class EnumeratorClass final : public platform::CountedObject<IClassFactory> {
public:
    EnumeratorClass(IMMDeviceEnumerator& enumerator, Notes& itsNotes) : real(enumerator), notes(itsNotes) {}

    HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown*, REFIID id, void** object) override {
        const ComPointer<NotedEnumerator> made(new NotedEnumerator(real, notes));
        return made->QueryInterface(id, object);
    }
    HRESULT STDMETHODCALLTYPE LockServer(BOOL) override { return published::ok; }

private:
    IMMDeviceEnumerator& real;
    Notes& notes;
};

#pragma GCC diagnostic pop

void require(HRESULT result, const char* otherwise) {
    if (published::failed(result)) {
        throw std::runtime_error(otherwise);
    }
}

}  // namespace

struct NotedDevices::State {
    State() {
        require(platform::createDeviceEnumerator(real.receive()), "no enumerator of devices");
        const ComPointer<EnumeratorClass> factory(new EnumeratorClass(*real, notes));
        require(CoRegisterClassObject(enumeratorClass, factory.get(), CLSCTX_INPROC_SERVER,
                                      REGCLS_MULTIPLEUSE, &cookie),
                "the class of the enumerator can't be taken over");
    }
    ~State() { CoRevokeClassObject(cookie); }
    State(const State&) = delete;
    State& operator=(const State&) = delete;

    Notes notes;
    ComPointer<IMMDeviceEnumerator> real;
    DWORD cookie = 0;
};

NotedDevices::NotedDevices() : state(std::make_unique<State>()) {}
NotedDevices::~NotedDevices() = default;

int NotedDevices::setsAskedFor() const noexcept {
    return state->notes.setsAskedFor;
}

int NotedDevices::otherActivations() const noexcept {
    return state->notes.otherActivations;
}

}  // namespace korva::test
