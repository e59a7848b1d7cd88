#include "platform/linux/own_library.h"

#include <dlfcn.h>
#include <link.h>

namespace korva::platform {

const char* ownLibraryName() noexcept {
    Dl_info unused{};
    link_map* own = nullptr;
    const bool isKnown = dladdr1(reinterpret_cast<const void*>(&ownLibraryName), &unused,
                                 reinterpret_cast<void**>(&own), RTLD_DL_LINKMAP) != 0;
    // The loader gives the program itself no name.
    return isKnown && own->l_name[0] != '\0' ? own->l_name : nullptr;
}

}  // namespace korva::platform
