// A vector of eight floats: two quads. Its operations are those of the vector of one quad.
#pragma once

#include <immintrin.h>

#include "rt/kernels/quad.h"

namespace korva::rt {
namespace {

struct VectorAvx2 {
    static constexpr std::uint32_t width = 8;

    __m256 v;

    KORVA_INLINE __m256 join(__m128 low, __m128 high) {
        return _mm256_insertf128_ps(_mm256_castps128_ps256(low), high, 1);
    }

    KORVA_INLINE VectorAvx2 zero() { return {_mm256_setzero_ps()}; }
    KORVA_INLINE VectorAvx2 all(float x) { return {_mm256_set1_ps(x)}; }
    KORVA_INLINE VectorAvx2 load(const float* p) { return {_mm256_loadu_ps(p)}; }
    KORVA_INLINE void store(float* p, VectorAvx2 a) { _mm256_storeu_ps(p, a.v); }

    template <int count>
    KORVA_INLINE VectorAvx2 loadQuads(const float* p, std::size_t step) {
        return {join(loadQuad<count>(p), loadQuad<count>(p + step))};
    }
    template <int count>
    KORVA_INLINE void storeQuads(float* p, std::size_t step, VectorAvx2 a) {
        storeQuad<count>(p, _mm256_castps256_ps128(a.v));
        storeQuad<count>(p + step, _mm256_extractf128_ps(a.v, 1));
    }
    KORVA_INLINE VectorAvx2 loadRows(const float* const* rows, std::size_t at) {
        return {join(_mm_loadu_ps(rows[0] + at), _mm_loadu_ps(rows[4] + at))};
    }

    KORVA_INLINE VectorAvx2 add(VectorAvx2 a, VectorAvx2 b) { return {_mm256_add_ps(a.v, b.v)}; }
    KORVA_INLINE VectorAvx2 sub(VectorAvx2 a, VectorAvx2 b) { return {_mm256_sub_ps(a.v, b.v)}; }
    KORVA_INLINE VectorAvx2 mul(VectorAvx2 a, VectorAvx2 b) { return {_mm256_mul_ps(a.v, b.v)}; }
    KORVA_INLINE VectorAvx2 max(VectorAvx2 a, VectorAvx2 b) { return {_mm256_max_ps(a.v, b.v)}; }
    KORVA_INLINE VectorAvx2 abs(VectorAvx2 a) { return {_mm256_andnot_ps(_mm256_set1_ps(-0.0f), a.v)}; }
    KORVA_INLINE VectorAvx2 whereLess(VectorAvx2 a, VectorAvx2 b, VectorAvx2 then, VectorAvx2 other) {
        return {_mm256_blendv_ps(other.v, then.v, _mm256_cmp_ps(a.v, b.v, _CMP_LT_OQ))};
    }

    KORVA_INLINE void transpose(VectorAvx2& a, VectorAvx2& b, VectorAvx2& c, VectorAvx2& d) {
        const __m256 ab0 = _mm256_unpacklo_ps(a.v, b.v);
        const __m256 ab1 = _mm256_unpackhi_ps(a.v, b.v);
        const __m256 cd0 = _mm256_unpacklo_ps(c.v, d.v);
        const __m256 cd1 = _mm256_unpackhi_ps(c.v, d.v);
        a.v = _mm256_shuffle_ps(ab0, cd0, _MM_SHUFFLE(1, 0, 1, 0));
        b.v = _mm256_shuffle_ps(ab0, cd0, _MM_SHUFFLE(3, 2, 3, 2));
        c.v = _mm256_shuffle_ps(ab1, cd1, _MM_SHUFFLE(1, 0, 1, 0));
        d.v = _mm256_shuffle_ps(ab1, cd1, _MM_SHUFFLE(3, 2, 3, 2));
    }
    KORVA_INLINE void unzip(VectorAvx2& a, VectorAvx2& b) {
        const __m256 low = _mm256_permute2f128_ps(a.v, b.v, 0x20);
        const __m256 high = _mm256_permute2f128_ps(a.v, b.v, 0x31);
        a.v = _mm256_shuffle_ps(low, high, _MM_SHUFFLE(2, 0, 2, 0));
        b.v = _mm256_shuffle_ps(low, high, _MM_SHUFFLE(3, 1, 3, 1));
    }
    KORVA_INLINE void zip(VectorAvx2& a, VectorAvx2& b) {
        const __m256 low = _mm256_unpacklo_ps(a.v, b.v);
        const __m256 high = _mm256_unpackhi_ps(a.v, b.v);
        a.v = _mm256_permute2f128_ps(low, high, 0x20);
        b.v = _mm256_permute2f128_ps(low, high, 0x31);
    }
    KORVA_INLINE VectorAvx2 firstPairs(VectorAvx2 a, VectorAvx2 b) {
        return {_mm256_shuffle_ps(a.v, b.v, _MM_SHUFFLE(1, 0, 1, 0))};
    }
    KORVA_INLINE VectorAvx2 secondPairs(VectorAvx2 a, VectorAvx2 b) {
        return {_mm256_shuffle_ps(a.v, b.v, _MM_SHUFFLE(3, 2, 3, 2))};
    }
    KORVA_INLINE void unzipPairs(VectorAvx2& a, VectorAvx2& b, VectorAvx2& c) {
        // Each pair of the result is in its own place in two of the three already, or changes it once.
        const __m256 first = _mm256_blend_ps(_mm256_blend_ps(a.v, b.v, 0x30), c.v, 0x0C);
        const __m256 second = _mm256_blend_ps(_mm256_blend_ps(b.v, a.v, 0x0C), c.v, 0x30);
        const __m256 third = _mm256_blend_ps(_mm256_blend_ps(c.v, b.v, 0x0C), a.v, 0x30);
        a.v = orderPairs<_MM_SHUFFLE(1, 2, 3, 0)>(first);
        b.v = orderPairs<_MM_SHUFFLE(2, 3, 0, 1)>(second);
        c.v = orderPairs<_MM_SHUFFLE(3, 0, 1, 2)>(third);
    }
    template <int order>
    KORVA_INLINE __m256 orderPairs(__m256 pairs) {
        return _mm256_castpd_ps(_mm256_permute4x64_pd(_mm256_castps_pd(pairs), order));
    }
    KORVA_INLINE VectorAvx2 firstTwice(VectorAvx2 a) { return {_mm256_moveldup_ps(a.v)}; }
    KORVA_INLINE VectorAvx2 secondTwice(VectorAvx2 a) { return {_mm256_movehdup_ps(a.v)}; }
};

}  // namespace
}  // namespace korva::rt
