#include "peak_meters.h"

#include <immintrin.h>

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace equaliser {
namespace {

/// The operand that is no number must come first: then the other one is the greater.
float peakOf(const float* samples, std::uint32_t count) {
    __m128 peaks = _mm_setzero_ps();
    std::uint32_t i = 0;
    for (; i + 4 <= count; i += 4) {
        peaks = _mm_max_ps(_mm_andnot_ps(_mm_set1_ps(-0.0f), _mm_loadu_ps(samples + i)), peaks);
    }
    float lanes[4];
    _mm_storeu_ps(lanes, peaks);
    float peak = *std::max_element(lanes, lanes + 4);
    for (; i < count; ++i) {
        peak = std::fmax(peak, std::fabs(samples[i]));
    }
    return peak;
}

/// If the owner takes the old peak between the two steps, the new one is the first of the next reading.
void raise(std::atomic<float>& peak, float level) {
    float before = peak.load(std::memory_order_relaxed);
    if (level > before && !peak.compare_exchange_strong(before, level, std::memory_order_relaxed)) {
        peak.store(level, std::memory_order_relaxed);
    }
}

}  // namespace

void PeakMeters::note(const DspBlock& block) {
    for (std::size_t plane = 0; plane < peaks.size(); ++plane) {
        raise(peaks[plane], peakOf(block.channels[plane], block.frames));
    }
}

PlaneLevels PeakMeters::take() {
    PlaneLevels levels;
    for (std::size_t plane = 0; plane < peaks.size(); ++plane) {
        levels[plane] = peaks[plane].exchange(0, std::memory_order_relaxed);
    }
    return levels;
}

}  // namespace equaliser
