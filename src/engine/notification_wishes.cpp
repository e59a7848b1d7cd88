#include "engine/notification_wishes.h"

#include <algorithm>
#include <array>

#include "params/effects_store_provider.h"
#include "platform/published/results.h"

namespace korva::engine {

using published::APO_NOTIFICATION_DESCRIPTOR;

namespace {

using Descriptors = std::array<APO_NOTIFICATION_DESCRIPTOR, 3>;

Descriptors descriptorsOf(IMMDevice* device) noexcept {
    Descriptors list{};
    list[0].type = published::APO_NOTIFICATION_TYPE_SYSTEM_EFFECTS_PROPERTY_CHANGE;
    list[0].audioSystemEffectsPropertyChange = {device, params::storeContext};
    list[1].type = published::APO_NOTIFICATION_TYPE_ENDPOINT_PROPERTY_CHANGE;
    list[1].audioEndpointPropertyChange = {device};
    list[2].type = published::APO_NOTIFICATION_TYPE_ENDPOINT_VOLUME;
    list[2].audioEndpointVolume = {device};
    return list;
}

}  // namespace

HRESULT notificationsOf(IMMDevice* device, APO_NOTIFICATION_DESCRIPTOR** descriptors, DWORD* count) noexcept {
    if (descriptors == nullptr || count == nullptr) {
        return published::nullPointer;
    }
    *descriptors = nullptr;
    *count = 0;
    if (device == nullptr) {
        return published::ok;
    }
    const Descriptors list = descriptorsOf(device);
    auto* const copy = static_cast<APO_NOTIFICATION_DESCRIPTOR*>(CoTaskMemAlloc(sizeof(list)));
    if (copy != nullptr) {
        std::ranges::copy(list, copy);
        *descriptors = copy;
        *count = static_cast<DWORD>(list.size());
    }
    return published::ok;
}

}  // namespace korva::engine
