// Numbers too small to be heard, and so slow that they are.
#pragma once

#include <immintrin.h>

namespace equaliser {

/// While one is there, this thread takes denormal numbers for zero and makes none. Filters that ring out come
/// to them, and processors compute with them a hundred times slower.  [audio, rt]
class SmallNumbersAreZero {
public:
    SmallNumbersAreZero() { _mm_setcsr(before | flushToZero | denormalsAreZero); }
    ~SmallNumbersAreZero() { _mm_setcsr(before); }
    SmallNumbersAreZero(const SmallNumbersAreZero&) = delete;
    SmallNumbersAreZero& operator=(const SmallNumbersAreZero&) = delete;

private:
    static constexpr unsigned flushToZero = 0x8000;
    static constexpr unsigned denormalsAreZero = 0x40;

    const unsigned before = _mm_getcsr();
};

}  // namespace equaliser
