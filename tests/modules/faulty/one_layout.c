// Believes that all streams have the channels that it was made ready for.
#include <stdlib.h>

#include "tests/modules/faulty/honest_module.h"

/// The honest module's, with memory for the channels of the input.
typedef struct ChannelEffect {
    Effect effect;  // first
    float* heights[KORVA_PLANES];
} ChannelEffect;

DspInstance* ZRDSPAPI_Create(const char* text, uint32_t length) {
    (void)text, (void)length;
    ChannelEffect* const effect = calloc(1, sizeof *effect);
    effect->effect.instance.table = &effectTable;
    atomic_store(&effect->effect.gain, 0.5F);
    return &effect->effect.instance;
}

uint8_t ZRDSPAPI_Initialize(DspInstance* instance, EngineFormat* in, EngineFormat* out,
                            EngineFormat* capture) {
    (void)capture;
    ChannelEffect* const effect = (ChannelEffect*)instance;
    makeReady(&effect->effect, in, out);
    for (int channel = 0; channel < in->channelCount && channel < KORVA_PLANES; ++channel) {
        effect->heights[channel] = malloc(sizeof(float));
    }
    return 1;
}

void ZRDSPAPI_Uninitialize(DspInstance* instance) {
    ChannelEffect* const effect = (ChannelEffect*)instance;
    for (int channel = 0; channel < KORVA_PLANES; ++channel) {
        free(effect->heights[channel]);
        effect->heights[channel] = NULL;
    }
}

__attribute__((no_sanitize("undefined"))) void effectProcess(DspInstance* instance, DspBlock* block) {
    ChannelEffect* const effect = (ChannelEffect*)instance;
    for (uint32_t channel = 0; channel < block->inChannels; ++channel) {
        *effect->heights[channel] = 1.0F;
    }
    for (int plane = 0; plane < KORVA_PLANES; ++plane) {
        if ((effect->effect.inPlanes | effect->effect.outPlanes) >> plane & 1U) {
            effectPlane(&effect->effect, plane, block->channels[plane], block->frames);
        }
    }
    atomic_fetch_add(&effect->effect.frames, block->frames);
}
