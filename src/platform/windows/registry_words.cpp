#include "platform/registry_words.h"

namespace korva::platform {

const RegistryWords& registryWords() noexcept {
    static constexpr RegistryWords words = {
        "The registry is the one that Windows has. Much below HKLM and HKCR can only be changed by\n"
        "administrators.\n",
        ", one after the other; those before one that fails remain",
        "no right to do so in {}; an administrator may have it"};
    return words;
}

}  // namespace korva::platform
