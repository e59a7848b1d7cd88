#include "platform/registry_words.h"

namespace korva::platform {

const RegistryWords& registryWords() noexcept {
    static constexpr RegistryWords words = {
        "The registry is the file that KORVA_REGISTRY names, else\n"
        "$XDG_STATE_HOME/korva/registry or ~/.local/state/korva/registry.\n",
        ": all, or none",
        "no right to do so in the registry '{}'; its owner has, or set KORVA_REGISTRY to another file"};
    return words;
}

}  // namespace korva::platform
