#include "platform/system_version.h"

namespace korva::platform {

const SystemVersion& systemVersion() noexcept {
    static constexpr SystemVersion none;
    return none;
}

}  // namespace korva::platform
