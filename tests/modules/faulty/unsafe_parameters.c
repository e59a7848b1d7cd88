// Takes its settings away from the audio thread while a parameter comes.
#include <sched.h>

#include "tests/modules/faulty/honest_module.h"

static const float usual = 0.5F;
static const float* volatile gain = &usual;

__attribute__((no_sanitize("undefined"))) void effectPlane(Effect* effect, int plane, float* samples,
                                                           uint32_t frames) {
    for (uint32_t i = 0; i < frames; ++i) {
        samples[i] = *gain * lowPass(&effect->memory[plane], samples[i]);
    }
}

uint32_t ZRDSPAPI_SetParameter(DspInstance* instance, int32_t bank, int32_t id, int32_t index,
                               const void* data, uint32_t size) {
    (void)instance, (void)bank, (void)id, (void)index, (void)data, (void)size;
    gain = 0;
    sched_yield();
    for (volatile int delay = 0; delay < 20000;) {
        ++delay;
    }
    gain = &usual;
    return 0;
}
