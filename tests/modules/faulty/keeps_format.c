// Keeps a pointer to the format that it is made ready for, and reads there when sound comes.
#include "tests/modules/faulty/honest_module.h"

static const volatile EngineFormat* volatile kept;

uint8_t ZRDSPAPI_Initialize(DspInstance* instance, EngineFormat* in, EngineFormat* out,
                            EngineFormat* capture) {
    (void)capture;
    kept = in;
    makeReady((Effect*)instance, in, out);
    return 1;
}

void effectPlane(Effect* effect, int plane, float* samples, uint32_t frames) {
    const float height = kept->sampleRate > 48000 ? 0.25F : 0.5F;
    for (uint32_t i = 0; i < frames; ++i) {
        samples[i] = height * lowPass(&effect->memory[plane], samples[i]);
    }
}
