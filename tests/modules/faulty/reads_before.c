// Reads the sample before a plane.
#include "tests/modules/faulty/honest_module.h"

void effectPlane(Effect* effect, int plane, float* samples, uint32_t frames) {
    (void)effect, (void)plane;
    const volatile float* const source = samples;
    float before = source[-1];
    for (uint32_t i = 0; i < frames; ++i) {
        const float sample = source[i];
        samples[i] = 0.5F * (sample + 0.0F * before);
        before = sample;
    }
}
