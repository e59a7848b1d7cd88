// A vector of four floats: one quad.
#pragma once

#include <immintrin.h>

#include "rt/kernels/quad.h"

namespace korva::rt {
namespace {

/// Quads are the units of everything below: a vector of n quads works on n groups of four at once.
struct VectorSse2 {
    static constexpr std::uint32_t width = 4;

    __m128 v;

    KORVA_INLINE VectorSse2 zero() { return {_mm_setzero_ps()}; }
    KORVA_INLINE VectorSse2 all(float x) { return {_mm_set1_ps(x)}; }
    KORVA_INLINE VectorSse2 load(const float* p) { return {_mm_loadu_ps(p)}; }
    KORVA_INLINE void store(float* p, VectorSse2 a) { _mm_storeu_ps(p, a.v); }

    /// Quad i from `p + i * step`, `count` floats of it.
    template <int count>
    KORVA_INLINE VectorSse2 loadQuads(const float* p, std::size_t) {
        return {loadQuad<count>(p)};
    }
    template <int count>
    KORVA_INLINE void storeQuads(float* p, std::size_t, VectorSse2 a) {
        storeQuad<count>(p, a.v);
    }
    /// Quad i from `rows[4 * i] + at`.
    KORVA_INLINE VectorSse2 loadRows(const float* const* rows, std::size_t at) {
        return {_mm_loadu_ps(rows[0] + at)};
    }

    KORVA_INLINE VectorSse2 add(VectorSse2 a, VectorSse2 b) { return {_mm_add_ps(a.v, b.v)}; }
    KORVA_INLINE VectorSse2 sub(VectorSse2 a, VectorSse2 b) { return {_mm_sub_ps(a.v, b.v)}; }
    KORVA_INLINE VectorSse2 mul(VectorSse2 a, VectorSse2 b) { return {_mm_mul_ps(a.v, b.v)}; }
    /// The second where either is a NaN.
    KORVA_INLINE VectorSse2 max(VectorSse2 a, VectorSse2 b) { return {_mm_max_ps(a.v, b.v)}; }
    KORVA_INLINE VectorSse2 abs(VectorSse2 a) { return {_mm_andnot_ps(_mm_set1_ps(-0.0f), a.v)}; }
    /// `then` where a < b, else `other`.
    KORVA_INLINE VectorSse2 whereLess(VectorSse2 a, VectorSse2 b, VectorSse2 then, VectorSse2 other) {
        const __m128 less = _mm_cmplt_ps(a.v, b.v);
#ifdef __SSE4_1__
        return {_mm_blendv_ps(other.v, then.v, less)};
#else
        return {_mm_or_ps(_mm_and_ps(less, then.v), _mm_andnot_ps(less, other.v))};
#endif
    }

    /// Transposes each quad's four by four.
    KORVA_INLINE void transpose(VectorSse2& a, VectorSse2& b, VectorSse2& c, VectorSse2& d) {
        _MM_TRANSPOSE4_PS(a.v, b.v, c.v, d.v);
    }
    /// Interleaved pairs to two vectors, and back.
    KORVA_INLINE void unzip(VectorSse2& a, VectorSse2& b) {
        const __m128 even = _mm_shuffle_ps(a.v, b.v, _MM_SHUFFLE(2, 0, 2, 0));
        b.v = _mm_shuffle_ps(a.v, b.v, _MM_SHUFFLE(3, 1, 3, 1));
        a.v = even;
    }
    KORVA_INLINE void zip(VectorSse2& a, VectorSse2& b) {
        const __m128 low = _mm_unpacklo_ps(a.v, b.v);
        b.v = _mm_unpackhi_ps(a.v, b.v);
        a.v = low;
    }
    /// In each quad: the first pairs of a and b, or the second.
    KORVA_INLINE VectorSse2 firstPairs(VectorSse2 a, VectorSse2 b) {
        return {_mm_movelh_ps(a.v, b.v)};
    }
    KORVA_INLINE VectorSse2 secondPairs(VectorSse2 a, VectorSse2 b) {
        return {_mm_movehl_ps(b.v, a.v)};
    }
    /// Frames of three pairs, in three vectors: the first pair of each frame, the second, the third.
    KORVA_INLINE void unzipPairs(VectorSse2& a, VectorSse2& b, VectorSse2& c) {
        const __m128 first = _mm_shuffle_ps(a.v, b.v, _MM_SHUFFLE(3, 2, 1, 0));
        const __m128 second = _mm_shuffle_ps(a.v, c.v, _MM_SHUFFLE(1, 0, 3, 2));
        c.v = _mm_shuffle_ps(b.v, c.v, _MM_SHUFFLE(3, 2, 1, 0));
        a.v = first;
        b.v = second;
    }
    /// In each pair: the first float twice, or the second.
    KORVA_INLINE VectorSse2 firstTwice(VectorSse2 a) {
        return {_mm_shuffle_ps(a.v, a.v, _MM_SHUFFLE(2, 2, 0, 0))};
    }
    KORVA_INLINE VectorSse2 secondTwice(VectorSse2 a) {
        return {_mm_shuffle_ps(a.v, a.v, _MM_SHUFFLE(3, 3, 1, 1))};
    }
};

}  // namespace
}  // namespace korva::rt
