// Reads the sample behind a plane.
#include "tests/modules/faulty/honest_module.h"

void effectPlane(Effect* effect, int plane, float* samples, uint32_t frames) {
    (void)effect, (void)plane;
    const volatile float* const source = samples;
    for (uint32_t i = 0; i < frames; ++i) {
        samples[i] = 0.5F * (source[i] + (frames == KORVA_BLOCK_FRAMES ? source[i + 1] : 0.0F));
    }
}
