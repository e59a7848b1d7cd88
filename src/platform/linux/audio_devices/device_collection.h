// Devices that were there when somebody asked.
#pragma once

#include <vector>

#include "platform/counted_object.h"
#include "platform/published/device_interfaces.h"

namespace korva::platform::devices {

/// [any]
class DeviceCollection final : public CountedObject<IMMDeviceCollection> {
public:
    explicit DeviceCollection(std::vector<Reference<IMMDevice>> found) : devices(std::move(found)) {}

    HRESULT STDMETHODCALLTYPE GetCount(UINT* count) override {
        if (count == nullptr) {
            return published::nullPointer;
        }
        *count = static_cast<UINT>(devices.size());
        return published::ok;
    }
    /// E_INVALIDARG past the last one; a device that was removed since is given all the same.
    HRESULT STDMETHODCALLTYPE Item(UINT index, IMMDevice** device) override {
        if (device == nullptr) {
            return published::nullPointer;
        }
        *device = nullptr;
        if (index >= devices.size()) {
            return published::invalidArgument;
        }
        *device = shareReference(*devices[index]).release();
        return published::ok;
    }

private:
    ~DeviceCollection() override = default;

    const std::vector<Reference<IMMDevice>> devices;
};

}  // namespace korva::platform::devices
