#include "platform/class_activation.h"

#include <combaseapi.h>

#include "platform/published/device_interfaces.h"

namespace korva::platform {

HRESULT createObjectOfClass(const CLSID& classId, const IID& id, void** object) noexcept {
    *object = nullptr;
    return CoCreateInstance(classId, nullptr, published::classContextInProcess, id, object);
}

}  // namespace korva::platform
