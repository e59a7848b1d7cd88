// Fades by the block, not by the frame.
#include "tests/modules/faulty/honest_module.h"

void effectPlane(Effect* effect, int plane, float* samples, uint32_t frames) {
    for (uint32_t i = 0; i < frames; ++i) {
        samples[i] *= 0.5F + 0.5F * effect->memory[plane];
    }
    effect->memory[plane] = 0.5F * effect->memory[plane] + 0.25F;
}
