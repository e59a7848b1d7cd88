// Keeps a pointer to a parameter's bytes, which aren't its own, and reads there when sound comes.
#include <stddef.h>

#include "tests/modules/faulty/honest_module.h"

static const volatile uint8_t* volatile kept;

uint32_t ZRDSPAPI_SetParameter(DspInstance* instance, int32_t bank, int32_t id, int32_t index,
                               const void* data, uint32_t size) {
    (void)instance, (void)bank, (void)id, (void)index;
    kept = size == 0 ? NULL : data;
    return 0;
}

void effectPlane(Effect* effect, int plane, float* samples, uint32_t frames) {
    const float height = kept != NULL && *kept == 0 ? 0.25F : 0.5F;
    for (uint32_t i = 0; i < frames; ++i) {
        samples[i] = height * lowPass(&effect->memory[plane], samples[i]);
    }
}
