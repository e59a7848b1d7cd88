#include "band_filter.h"

#if defined(__AVX2__) && defined(__FMA__)

#include <immintrin.h>

#include "band_filter_loops.h"

namespace equaliser {
namespace {

/// All eight planes. Addresses need no alignment: the stack has none of 32 bytes on Windows.
struct LanesAvx2 {
    static constexpr std::size_t count = 8;
    __m256 v;

    static LanesAvx2 load(const float* from) { return {_mm256_loadu_ps(from)}; }
    static LanesAvx2 all(float value) { return {_mm256_set1_ps(value)}; }
    void store(float* to) const { _mm256_storeu_ps(to, v); }

    LanesAvx2 operator-(LanesAvx2 other) const { return {_mm256_sub_ps(v, other.v)}; }
    LanesAvx2 operator*(LanesAvx2 other) const { return {_mm256_mul_ps(v, other.v)}; }
    LanesAvx2 timesPlus(LanesAvx2 factor, LanesAvx2 term) const {
        return {_mm256_fmadd_ps(v, factor.v, term.v)};
    }
    LanesAvx2 orZeroAbove(float limit) const {
        const __m256 magnitude = _mm256_andnot_ps(_mm256_set1_ps(-0.0f), v);
        return {_mm256_and_ps(v, _mm256_cmp_ps(magnitude, _mm256_set1_ps(limit), _CMP_LE_OQ))};
    }
};

}  // namespace

BandFilter bandFilterAvx2() {
    return filterBands<LanesAvx2>;
}

}  // namespace equaliser

#else

namespace equaliser {

BandFilter bandFilterAvx2() {
    return nullptr;
}

}  // namespace equaliser

#endif
