#include "rt/kernels/kernels.h"

#include <array>
#include <cstdlib>

#include "rt/kernels/instruction_sets.h"
#include "rt/realtime.h"

namespace korva::rt {
namespace {

/// Those that the processor and the operating system support, in rising order.
struct Supported {
    std::array<const Kernels*, 4> versions{};
    std::size_t count = 0;

    Supported() noexcept {
        add(plainKernels);
        add(sse2Kernels);  // the base of x86-64
        if (__builtin_cpu_supports("avx2")) {
            add(avx2Kernels);
            if (__builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512vl") &&
                __builtin_cpu_supports("avx512dq") && __builtin_cpu_supports("avx512bw")) {
                add(avx512Kernels);
            }
        }
    }
    void add(const Kernels& version) noexcept { versions[count++] = &version; }
};

const Supported& supported() noexcept {
    static const Supported list;
    return list;
}

const Kernels& choose() noexcept {
    if (const char* forced = std::getenv("KORVA_KERNELS")) {
        if (const Kernels* version = findKernels(forced)) {
            return *version;
        }
    }
    return *supportedKernels().back();
}

// The plain version until the initialiser below has run, for static objects that are made before.
constinit const Kernels* chosen = &plainKernels;

struct ChooseAtLoad {
    ChooseAtLoad() noexcept { chosen = &choose(); }
} const chooseAtLoad;

}  // namespace

std::span<const Kernels* const> supportedKernels() noexcept {
    return {supported().versions.data(), supported().count};
}

const Kernels* findKernels(std::string_view name) noexcept {
    for (const Kernels* version : supportedKernels()) {
        if (version->name == name) {
            return version;
        }
    }
    return nullptr;
}

KORVA_RT_CODE const Kernels& chosenKernels() noexcept {
    return *chosen;
}

}  // namespace korva::rt
