// Remembers sound in one place for all instances.
#include "tests/modules/faulty/honest_module.h"

static float memory[KORVA_PLANES];

void effectPlane(Effect* effect, int plane, float* samples, uint32_t frames) {
    (void)effect;
    for (uint32_t i = 0; i < frames; ++i) {
        samples[i] = 0.5F * lowPass(&memory[plane], samples[i]);
    }
}

void ZRDSPAPI_Clear(DspInstance* instance, int32_t which) {
    (void)instance, (void)which;
    for (int plane = 0; plane < KORVA_PLANES; ++plane) {
        memory[plane] = 0;
    }
}
