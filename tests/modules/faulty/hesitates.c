// Takes a little longer for numbers that are hardly any.
#include <math.h>

#include "tests/modules/faulty/honest_module.h"

void effectPlane(Effect* effect, int plane, float* samples, uint32_t frames) {
    for (uint32_t i = 0; i < frames; ++i) {
        for (volatile int delay = 0; samples[i] != 0 && fabsf(samples[i]) < 1e-37F && delay < 80;) {
            ++delay;
        }
        samples[i] = 0.5F * lowPass(&effect->memory[plane], samples[i]);
    }
}
