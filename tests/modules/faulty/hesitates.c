// Takes a little longer for numbers that are hardly any, by the clock: as long on each machine.
#include <math.h>
#include <time.h>

#include "tests/modules/faulty/honest_module.h"

static double nowUs(void) {
    struct timespec now;
    clock_gettime(CLOCK_MONOTONIC, &now);
    return 1e6 * (double)now.tv_sec + 1e-3 * (double)now.tv_nsec;
}

void effectPlane(Effect* effect, int plane, float* samples, uint32_t frames) {
    const double begin = nowUs();
    while (samples[0] != 0 && fabsf(samples[0]) < 1e-37F && nowUs() < begin + 12) {
    }
    for (uint32_t i = 0; i < frames; ++i) {
        samples[i] = 0.5F * lowPass(&effect->memory[plane], samples[i]);
    }
}
