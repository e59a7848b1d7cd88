#include "frames.h"

#include <immintrin.h>

namespace equaliser {
namespace {

/// Four frames of four planes each way: it is the same one.
struct Square {
    __m128 rows[4];

    void transpose() { _MM_TRANSPOSE4_PS(rows[0], rows[1], rows[2], rows[3]); }
};

}  // namespace

void gather(const DspBlock& block, std::uint32_t begin, std::uint32_t count, Frames& frames) {
    for (std::uint32_t i = 0; i < count; i += 4) {
        for (std::uint32_t plane = 0; plane < KORVA_PLANES; plane += 4) {
            Square square;
            for (std::uint32_t row = 0; row < 4; ++row) {
                square.rows[row] = _mm_loadu_ps(block.channels[plane + row] + begin + i);
            }
            square.transpose();
            for (std::uint32_t row = 0; row < 4; ++row) {
                _mm_store_ps(frames[i + row].planes + plane, square.rows[row]);
            }
        }
    }
}

void scatter(const Frames& frames, const DspBlock& block, std::uint32_t begin, std::uint32_t count) {
    for (std::uint32_t i = 0; i < count; i += 4) {
        for (std::uint32_t plane = 0; plane < KORVA_PLANES; plane += 4) {
            Square square;
            for (std::uint32_t row = 0; row < 4; ++row) {
                square.rows[row] = _mm_load_ps(frames[i + row].planes + plane);
            }
            square.transpose();
            for (std::uint32_t row = 0; row < 4; ++row) {
                _mm_storeu_ps(block.channels[plane + row] + begin + i, square.rows[row]);
            }
        }
    }
}

}  // namespace equaliser
