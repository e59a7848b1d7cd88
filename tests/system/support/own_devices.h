// A host's devices, properties and services.
#pragma once

#include <atomic>
#include <cstring>
#include <initializer_list>
#include <mutex>
#include <string>
#include <vector>

#include "platform/mutex.h"
#include "platform/published/audio_services.h"
#include "platform/published/device_interfaces.h"
#include "platform/unicode.h"
#include "tests/system/support/known_ids.h"
#include "tests/system/support/own_object.h"

namespace korva::test {

inline constexpr auto notImplemented = static_cast<HRESULT>(0x80004001U);

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"  // published interfaces have no destructor

/// Has no property but the one that a test gives it.  [any]
class OwnPropertyStore final : public OwnObject<IPropertyStore> {
public:
    HRESULT STDMETHODCALLTYPE GetCount(DWORD*) override { return notImplemented; }
    HRESULT STDMETHODCALLTYPE GetAt(DWORD, PROPERTYKEY*) override { return notImplemented; }
    HRESULT STDMETHODCALLTYPE GetValue(REFPROPERTYKEY key, PROPVARIANT* found) override {
        ++questions;
        *found = PROPVARIANT{};
        if (key.fmtid == disableEffectsFormat && key.pid == 5) {
            *found = value;
        }
        return told;
    }
    HRESULT STDMETHODCALLTYPE SetValue(REFPROPERTYKEY, REFPROPVARIANT) override { return notImplemented; }
    HRESULT STDMETHODCALLTYPE Commit() override { return notImplemented; }

    PROPVARIANT value{};  ///< Whether effects are disabled; owns no memory.
    HRESULT told = result::ok;
    std::atomic<int> questions{0};
};

/// Tells an identifier and nothing else.  [any]
class OwnDevice final : public OwnObject<IMMDevice> {
public:
    explicit OwnDevice(const std::string& id) : identifier(platform::toWide(id)) {}

    HRESULT STDMETHODCALLTYPE Activate(REFIID, DWORD, PROPVARIANT*, void** object) override {
        *object = nullptr;
        return result::noInterface;
    }
    HRESULT STDMETHODCALLTYPE OpenPropertyStore(DWORD, IPropertyStore** store) override {
        *store = nullptr;
        return notImplemented;
    }
    HRESULT STDMETHODCALLTYPE GetId(LPWSTR* id) override {
        *id = nullptr;
        if (givesId) {
            const std::size_t size = (identifier.size() + 1) * sizeof(WCHAR);
            *id = static_cast<LPWSTR>(CoTaskMemAlloc(size));
            std::memcpy(*id, identifier.c_str(), size);
        }
        return told;
    }
    HRESULT STDMETHODCALLTYPE GetState(DWORD* state) override {
        *state = published::deviceStateActive;
        return result::ok;
    }

    bool givesId = true;
    HRESULT told = result::ok;

private:
    const platform::WideString identifier;
};

/// Devices in an order.  [any]
class OwnDevices final : public OwnObject<IMMDeviceCollection> {
public:
    OwnDevices(std::initializer_list<IMMDevice*> inside)
        : count(static_cast<UINT>(inside.size())), devices(inside) {}

    HRESULT STDMETHODCALLTYPE GetCount(UINT* number) override {
        *number = count;
        return countTold;
    }
    HRESULT STDMETHODCALLTYPE Item(UINT index, IMMDevice** device) override {
        {
            const std::lock_guard guard(mutex);
            asked.push_back(index);
        }
        *device = index < devices.size() ? devices[index] : nullptr;
        if (*device != nullptr) {
            (*device)->AddRef();
        }
        return itemTold;
    }

    UINT count;  ///< As it says, true or not.
    HRESULT countTold = result::ok;
    HRESULT itemTold = result::ok;
    std::vector<UINT> asked;  ///< To be read while nobody asks.

private:
    platform::Mutex mutex;
    const std::vector<IMMDevice*> devices;
};

/// Takes no lines.  [any]
class OwnLog final : public OwnObject<published::IAudioProcessingObjectLoggingService> {
public:
    void STDMETHODCALLTYPE ApoLog(published::APO_LOG_LEVEL, LPCWSTR, ...) override {}
};

/// Names a work queue.  [any]
class OwnWorkQueue final : public OwnObject<published::IAudioProcessingObjectRTQueueService> {
public:
    HRESULT STDMETHODCALLTYPE GetRealTimeWorkQueue(DWORD* workQueueId) override {
        ++questions;
        *workQueueId = 7;
        return told;
    }

    HRESULT told = result::ok;
    std::atomic<int> questions{0};
};

/// Gives what it is told to, which may be nothing, with the result that it is told.  [any]
class OwnServices final : public OwnObject<IServiceProvider> {
public:
    HRESULT STDMETHODCALLTYPE QueryService(REFGUID service, REFIID id, void** object) override {
        if (service == loggingService && id == loggingInterface) {
            return give(log, logTold, object);
        }
        if (service == workQueueService && id == workQueueInterface) {
            return give(queue, queueTold, object);
        }
        ADD_FAILURE() << "a service that no audio object asks for";
        *object = nullptr;
        return result::noInterface;
    }

    IUnknown* log = nullptr;
    HRESULT logTold = result::noInterface;
    IUnknown* queue = nullptr;
    HRESULT queueTold = result::noInterface;

private:
    static HRESULT give(IUnknown* service, HRESULT told, void** object) {
        *object = service;
        if (service != nullptr) {
            service->AddRef();
        }
        return told;
    }
};

#pragma GCC diagnostic pop

}  // namespace korva::test
