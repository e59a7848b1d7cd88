// A vector of sixteen floats: four quads. Its operations are those of the vector of one quad that the loops
// over planes need; the follower has none, since comparing into mask registers lengthens its chain.
#pragma once

#include <immintrin.h>

#include "rt/kernels/quad.h"

namespace korva::rt {
namespace {

struct VectorAvx512 {
    static constexpr std::uint32_t width = 16;

    __m512 v;

    KORVA_INLINE __m512 join(__m128 a, __m128 b, __m128 c, __m128 d) {
        const __m256 low = _mm256_insertf128_ps(_mm256_castps128_ps256(a), b, 1);
        const __m256 high = _mm256_insertf128_ps(_mm256_castps128_ps256(c), d, 1);
        return _mm512_insertf32x8(_mm512_castps256_ps512(low), high, 1);
    }

    KORVA_INLINE VectorAvx512 zero() { return {_mm512_setzero_ps()}; }
    KORVA_INLINE VectorAvx512 all(float x) { return {_mm512_set1_ps(x)}; }
    KORVA_INLINE VectorAvx512 load(const float* p) { return {_mm512_loadu_ps(p)}; }
    KORVA_INLINE void store(float* p, VectorAvx512 a) { _mm512_storeu_ps(p, a.v); }

    template <int count>
    KORVA_INLINE VectorAvx512 loadQuads(const float* p, std::size_t step) {
        return {join(loadQuad<count>(p), loadQuad<count>(p + step), loadQuad<count>(p + 2 * step),
                     loadQuad<count>(p + 3 * step))};
    }
    template <int count>
    KORVA_INLINE void storeQuads(float* p, std::size_t step, VectorAvx512 a) {
        storeQuad<count>(p, _mm512_castps512_ps128(a.v));
        storeQuad<count>(p + step, _mm512_extractf32x4_ps(a.v, 1));
        storeQuad<count>(p + 2 * step, _mm512_extractf32x4_ps(a.v, 2));
        storeQuad<count>(p + 3 * step, _mm512_extractf32x4_ps(a.v, 3));
    }

    KORVA_INLINE VectorAvx512 add(VectorAvx512 a, VectorAvx512 b) { return {_mm512_add_ps(a.v, b.v)}; }
    KORVA_INLINE VectorAvx512 mul(VectorAvx512 a, VectorAvx512 b) { return {_mm512_mul_ps(a.v, b.v)}; }

    KORVA_INLINE void transpose(VectorAvx512& a, VectorAvx512& b, VectorAvx512& c, VectorAvx512& d) {
        const __m512 ab0 = _mm512_unpacklo_ps(a.v, b.v);
        const __m512 ab1 = _mm512_unpackhi_ps(a.v, b.v);
        const __m512 cd0 = _mm512_unpacklo_ps(c.v, d.v);
        const __m512 cd1 = _mm512_unpackhi_ps(c.v, d.v);
        a.v = _mm512_shuffle_ps(ab0, cd0, _MM_SHUFFLE(1, 0, 1, 0));
        b.v = _mm512_shuffle_ps(ab0, cd0, _MM_SHUFFLE(3, 2, 3, 2));
        c.v = _mm512_shuffle_ps(ab1, cd1, _MM_SHUFFLE(1, 0, 1, 0));
        d.v = _mm512_shuffle_ps(ab1, cd1, _MM_SHUFFLE(3, 2, 3, 2));
    }
    KORVA_INLINE void unzip(VectorAvx512& a, VectorAvx512& b) {
        const __m512i even = _mm512_setr_epi32(0, 2, 4, 6, 8, 10, 12, 14, 16, 18, 20, 22, 24, 26, 28, 30);
        const __m512i odd = _mm512_setr_epi32(1, 3, 5, 7, 9, 11, 13, 15, 17, 19, 21, 23, 25, 27, 29, 31);
        const __m512 first = _mm512_permutex2var_ps(a.v, even, b.v);
        b.v = _mm512_permutex2var_ps(a.v, odd, b.v);
        a.v = first;
    }
    KORVA_INLINE void zip(VectorAvx512& a, VectorAvx512& b) {
        const __m512i low = _mm512_setr_epi32(0, 16, 1, 17, 2, 18, 3, 19, 4, 20, 5, 21, 6, 22, 7, 23);
        const __m512i high = _mm512_setr_epi32(8, 24, 9, 25, 10, 26, 11, 27, 12, 28, 13, 29, 14, 30, 15, 31);
        const __m512 first = _mm512_permutex2var_ps(a.v, low, b.v);
        b.v = _mm512_permutex2var_ps(a.v, high, b.v);
        a.v = first;
    }
    KORVA_INLINE VectorAvx512 firstPairs(VectorAvx512 a, VectorAvx512 b) {
        return {_mm512_shuffle_ps(a.v, b.v, _MM_SHUFFLE(1, 0, 1, 0))};
    }
    KORVA_INLINE VectorAvx512 secondPairs(VectorAvx512 a, VectorAvx512 b) {
        return {_mm512_shuffle_ps(a.v, b.v, _MM_SHUFFLE(3, 2, 3, 2))};
    }
    KORVA_INLINE void unzipPairs(VectorAvx512& a, VectorAvx512& b, VectorAvx512& c) {
        // Without this the compiler loads each vector anew for each permutation, and loads are the
        // bottleneck.
        asm("" : "+v"(a.v), "+v"(b.v));
        // Pairs are numbered 0 to 23 over the three vectors. Those of a and b come first, then those of c
        // (8 to 15 of the second permutation) behind them.
        const VectorAvx512 first = pickPairs(a, b, _mm512_setr_epi64(0, 3, 6, 9, 12, 15, 0, 0));
        const VectorAvx512 second = pickPairs(a, b, _mm512_setr_epi64(1, 4, 7, 10, 13, 0, 0, 0));
        const VectorAvx512 third = pickPairs(a, b, _mm512_setr_epi64(2, 5, 8, 11, 14, 0, 0, 0));
        a = pickPairs(first, c, _mm512_setr_epi64(0, 1, 2, 3, 4, 5, 10, 13));
        b = pickPairs(second, c, _mm512_setr_epi64(0, 1, 2, 3, 4, 8, 11, 14));
        c = pickPairs(third, c, _mm512_setr_epi64(0, 1, 2, 3, 4, 9, 12, 15));
    }
    KORVA_INLINE VectorAvx512 pickPairs(VectorAvx512 a, VectorAvx512 b, __m512i order) {
        return {
            _mm512_castpd_ps(_mm512_permutex2var_pd(_mm512_castps_pd(a.v), order, _mm512_castps_pd(b.v)))};
    }
    KORVA_INLINE VectorAvx512 firstTwice(VectorAvx512 a) { return {_mm512_moveldup_ps(a.v)}; }
    KORVA_INLINE VectorAvx512 secondTwice(VectorAvx512 a) { return {_mm512_movehdup_ps(a.v)}; }
};

}  // namespace
}  // namespace korva::rt
