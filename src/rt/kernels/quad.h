// Four floats in an SSE register, and the parts of one: what each vector is put together from.
#pragma once

#include <emmintrin.h>

#include <cstddef>
#include <cstdint>

namespace korva::rt {
namespace {

// Inlined everywhere in these headers: a copy of its own would lie outside the real-time code section, and
// could be linked into code for processors that lack the instruction set it was compiled for.
#define KORVA_INLINE [[gnu::always_inline]] static inline

/// Loads `count` floats, 1 to 4, and reads no more. The rest of the quad is 0.
template <int count>
KORVA_INLINE __m128 loadQuad(const float* p) {
    if constexpr (count == 4) {
        return _mm_loadu_ps(p);
    } else if constexpr (count == 3) {
        return _mm_movelh_ps(loadQuad<2>(p), _mm_load_ss(p + 2));
    } else if constexpr (count == 2) {
        return _mm_castsi128_ps(_mm_loadl_epi64(reinterpret_cast<const __m128i_u*>(p)));
    } else {
        return _mm_load_ss(p);
    }
}

/// Stores the first `count` floats, 1 to 4, and writes no more.
template <int count>
KORVA_INLINE void storeQuad(float* p, __m128 v) {
    if constexpr (count == 4) {
        _mm_storeu_ps(p, v);
    } else if constexpr (count == 3) {
        storeQuad<2>(p, v);
        _mm_store_ss(p + 2, _mm_movehl_ps(v, v));
    } else if constexpr (count == 2) {
        _mm_storel_epi64(reinterpret_cast<__m128i_u*>(p), _mm_castps_si128(v));
    } else {
        _mm_store_ss(p, v);
    }
}

}  // namespace
}  // namespace korva::rt
