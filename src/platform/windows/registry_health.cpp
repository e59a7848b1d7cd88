#include "platform/registry_health.h"

namespace korva::platform {

RegistryHealth examineRegistry() {
    RegistryHealth health;
    static_cast<void>(RegistryKey::root(RegistryRoot::localMachine, &health.result));
    return health;
}

}  // namespace korva::platform
