#include "platform/resources.h"

#include <algorithm>

#include "platform/linux/resource_table.h"

namespace korva::platform {

std::optional<std::string_view> textResource(std::uint16_t number) noexcept {
    const auto found =
        std::find_if(textResources.begin(), textResources.end(),
                     [number](const TextResource& resource) { return resource.number == number; });
    return found == textResources.end() ? std::nullopt : std::optional(found->text);
}

}  // namespace korva::platform
