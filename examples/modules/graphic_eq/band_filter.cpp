#include "band_filter.h"

namespace equaliser {

BandFilter fastestBandFilter() {
    const BandFilter avx2 = bandFilterAvx2();
    if (avx2 != nullptr && __builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma")) {
        return avx2;
    }
    return filterBandsSse2;
}

}  // namespace equaliser
