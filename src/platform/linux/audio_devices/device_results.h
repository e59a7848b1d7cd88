// What published methods of devices give.
#pragma once

#include "platform/published/results.h"
#include "platform/registry_values.h"

namespace korva::platform::devices {

/// For a result of the registry: E_NOTFOUND for a device that is no longer there.  [any]
[[nodiscard]] constexpr HRESULT deviceResult(RegistryResult result) noexcept {
    const bool isGone = result == registry_result::notFound || result == registry_result::keyDeleted;
    return isGone ? published::notFound : hresultOf(result);
}

}  // namespace korva::platform::devices
