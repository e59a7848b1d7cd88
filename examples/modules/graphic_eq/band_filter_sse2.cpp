#include <immintrin.h>

#include "band_filter_loops.h"

namespace equaliser {
namespace {

/// Four planes.
struct LanesSse2 {
    static constexpr std::size_t count = 4;
    __m128 v;

    static LanesSse2 load(const float* from) { return {_mm_load_ps(from)}; }
    static LanesSse2 all(float value) { return {_mm_set1_ps(value)}; }
    void store(float* to) const { _mm_store_ps(to, v); }

    LanesSse2 operator-(LanesSse2 other) const { return {_mm_sub_ps(v, other.v)}; }
    LanesSse2 operator*(LanesSse2 other) const { return {_mm_mul_ps(v, other.v)}; }
    LanesSse2 timesPlus(LanesSse2 factor, LanesSse2 term) const {
        return {_mm_add_ps(_mm_mul_ps(v, factor.v), term.v)};
    }
    LanesSse2 orZeroAbove(float limit) const {
        const __m128 magnitude = _mm_andnot_ps(_mm_set1_ps(-0.0f), v);
        return {_mm_and_ps(v, _mm_cmple_ps(magnitude, _mm_set1_ps(limit)))};
    }
};

}  // namespace

void filterBandsSse2(const RunningBand* bands, std::size_t bandsRunning, float outputGain, Frame* frames,
                     std::size_t count) {
    filterBands<LanesSse2>(bands, bandsRunning, outputGain, frames, count);
}

}  // namespace equaliser
