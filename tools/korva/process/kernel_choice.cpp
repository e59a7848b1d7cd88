#include "korva/process/kernel_choice.h"

#include <cstdlib>

#include "korva/errors.h"
#include "rt/kernels/kernels.h"

namespace korva::tool {
namespace {

std::string supportedNames() {
    std::string names;
    for (const rt::Kernels* version : rt::supportedKernels()) {
        names += names.empty() ? "" : ", ";
        names += version->name;
    }
    return names;
}

}  // namespace

std::string chosenKernels() {
    const char* const forced = std::getenv("KORVA_KERNELS");
    if (forced != nullptr && *forced != '\0' && rt::findKernels(forced) == nullptr) {
        fail("KORVA_KERNELS names '{}', which isn't supported here; supported are {}", forced,
             supportedNames());
    }
    return std::string(rt::chosenKernels().name);
}

}  // namespace korva::tool
