// Where the code of published methods ends.
#pragma once

#include <new>

#include "platform/published/results.h"

namespace korva::platform {

/// Gives what `method()` gives. What it raises stops here, since callers of published methods take results
/// only: E_OUTOFMEMORY for want of memory, E_FAIL for anything else.  [any]
template <class Method>
HRESULT publishedCall(const Method& method) noexcept {
    try {
        return method();
    } catch (const std::bad_alloc&) {
        return published::outOfMemory;
    } catch (...) {
        return published::unspecifiedFailure;
    }
}

}  // namespace korva::platform
