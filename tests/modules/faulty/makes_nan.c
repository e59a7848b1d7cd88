// Divides by the height of the sound, and silence has none.
#include <math.h>

#include "tests/modules/faulty/honest_module.h"

void effectPlane(Effect* effect, int plane, float* samples, uint32_t frames) {
    (void)effect, (void)plane;
    for (uint32_t i = 0; i < frames; ++i) {
        samples[i] = samples[i] / fabsf(samples[i]);
    }
}
