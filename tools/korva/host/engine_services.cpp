#include "korva/host/engine_services.h"

namespace korva::tool {
namespace {

/// There are no threads behind its number: the host has one of its own to process on.
class WorkQueue final : public platform::CountedObject<published::IAudioProcessingObjectRTQueueService> {
public:
    HRESULT STDMETHODCALLTYPE GetRealTimeWorkQueue(DWORD* workQueueId) override {
        if (workQueueId == nullptr) {
            return published::nullPointer;
        }
        *workQueueId = 1;
        return published::ok;
    }

private:
    ~WorkQueue() override = default;
};

}  // namespace

HRESULT EmptyStore::GetCount(DWORD* count) {
    if (count == nullptr) {
        return published::nullPointer;
    }
    *count = 0;
    return published::ok;
}

HRESULT EmptyStore::GetAt(DWORD /*index*/, PROPERTYKEY* key) {
    return key == nullptr ? published::nullPointer : published::invalidArgument;
}

HRESULT EmptyStore::GetValue(REFPROPERTYKEY /*key*/, PROPVARIANT* value) {
    if (value == nullptr) {
        return published::nullPointer;
    }
    *value = {};
    return published::ok;
}

HRESULT EmptyStore::SetValue(REFPROPERTYKEY /*key*/, REFPROPVARIANT /*value*/) {
    return published::storageAccessDenied;
}

HRESULT EmptyStore::Commit() {
    return published::ok;
}

EndpointCollection::EndpointCollection(IMMDevice* device)
    : endpoint(device == nullptr ? nullptr : platform::shareReference(*device)) {}

HRESULT EndpointCollection::GetCount(UINT* count) {
    if (count == nullptr) {
        return published::nullPointer;
    }
    *count = endpoint ? 1 : 0;
    return published::ok;
}

HRESULT EndpointCollection::Item(UINT index, IMMDevice** device) {
    if (device == nullptr) {
        return published::nullPointer;
    }
    *device = nullptr;
    if (index != 0 || !endpoint) {
        return published::invalidArgument;
    }
    *device = platform::shareReference(*endpoint).release();
    return published::ok;
}

HRESULT EngineServices::QueryService(REFGUID service, REFIID id, void** object) {
    if (object == nullptr) {
        return published::nullPointer;
    }
    *object = nullptr;
    if (!(service == published::workQueueServiceId)) {
        return published::noInterface;
    }
    const platform::Reference<WorkQueue> queue(new WorkQueue);
    return queue->QueryInterface(id, object);
}

}  // namespace korva::tool
