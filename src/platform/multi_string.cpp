#include "platform/multi_string.h"

#include <algorithm>

namespace korva::platform {

std::size_t stringCount(WideView text) noexcept {
    const auto zeros = static_cast<std::size_t>(std::count(text.begin(), text.end(), WCHAR{0}));
    const bool isClosed = text.empty() || text.back() == 0;
    return isClosed ? zeros : zeros + 1;
}

WideView takeString(WideView& rest) noexcept {
    const std::size_t length = std::min(rest.find(WCHAR{0}), rest.size());
    const WideView first = rest.substr(0, length);
    rest.remove_prefix(std::min(length + 1, rest.size()));
    return first;
}

}  // namespace korva::platform
