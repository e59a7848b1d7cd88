// Keeps a NaN in its filter until it is cleared.
#include "tests/modules/faulty/honest_module.h"

void effectPlane(Effect* effect, int plane, float* samples, uint32_t frames) {
    for (uint32_t i = 0; i < frames; ++i) {
        effect->memory[plane] = 0.75F * effect->memory[plane] + 0.25F * samples[i];
        samples[i] = effect->memory[plane];
    }
}
