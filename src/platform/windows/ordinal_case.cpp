#include "platform/ordinal_case.h"

#include <windows.h>

namespace korva::platform {

bool equalIgnoringCase(WideView a, WideView b) noexcept {
    return a.size() == b.size() && CompareStringOrdinal(a.data(), static_cast<int>(a.size()), b.data(),
                                                        static_cast<int>(b.size()), TRUE) == CSTR_EQUAL;
}

}  // namespace korva::platform
