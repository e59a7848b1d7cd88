#include "platform/ordinal_case.h"

#include <algorithm>

#include "embedded_registry/case_folding.h"

namespace korva::platform {

bool equalIgnoringCase(WideView a, WideView b) noexcept {
    return std::ranges::equal(a, b, {}, embedded::foldCase, embedded::foldCase);
}

}  // namespace korva::platform
