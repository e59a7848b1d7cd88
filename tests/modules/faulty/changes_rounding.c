// Leaves the audio thread with another way to round.
#include <fenv.h>

#include "tests/modules/faulty/honest_module.h"

void effectPlane(Effect* effect, int plane, float* samples, uint32_t frames) {
    (void)effect, (void)plane, (void)samples, (void)frames;
    fesetround(FE_UPWARD);
}
