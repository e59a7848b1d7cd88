#include "tests/modules/faulty/honest_module.h"

#include <math.h>
#include <stdlib.h>
#include <string.h>

#define REPLACEABLE __attribute__((weak))

unsigned planesOfFormat(const EngineFormat* format) {
    unsigned planes = 0;
    for (int channel = 0; channel < format->channelCount && channel < KORVA_PLANES; ++channel) {
        planes |= 1U << format->planeOfChannel[channel];
    }
    return planes;
}

void makeReady(Effect* effect, const EngineFormat* in, const EngineFormat* out) {
    effect->inPlanes = planesOfFormat(in);
    effect->outPlanes = planesOfFormat(out);
    memset(effect->memory, 0, sizeof effect->memory);
}

float lowPass(float* memory, float sample) {
    const float size = fabsf(sample);
    const float usable = size > 1e-20F && size < 1e6F ? sample : 0.0F;
    *memory = 0.75F * *memory + 0.25F * usable;
    if (fabsf(*memory) < 1e-20F) {
        *memory = 0.0F;
    }
    return *memory;
}

REPLACEABLE void effectPlane(Effect* effect, int plane, float* samples, uint32_t frames) {
    const float gain = atomic_load(&effect->gain);
    for (uint32_t i = 0; i < frames; ++i) {
        samples[i] = gain * lowPass(&effect->memory[plane], samples[i]);
    }
}

REPLACEABLE void effectProcess(DspInstance* instance, DspBlock* block) {
    Effect* const effect = (Effect*)instance;
    for (int plane = 0; plane < KORVA_PLANES; ++plane) {
        if ((effect->inPlanes | effect->outPlanes) >> plane & 1U) {
            effectPlane(effect, plane, block->channels[plane], block->frames);
            atomic_store(&effect->levels[plane], fabsf(block->channels[plane][0]));
        }
    }
    atomic_fetch_add(&effect->frames, block->frames);
}

void doNothing(void) {}

uint32_t hasNoHardware(DspInstance* instance) {
    (void)instance;
    return 0;
}

REPLACEABLE const DspInstanceTable effectTable = {
    .unused = {doNothing, doNothing, doNothing, doNothing, doNothing, doNothing, doNothing, doNothing,
               doNothing, doNothing, doNothing},
    .process = effectProcess,
    .capture = effectProcess,
    .isHardwareAvailable = hasNoHardware,
};

REPLACEABLE DspInstance* ZRDSPAPI_Create(const char* text, uint32_t length) {
    (void)text, (void)length;
    Effect* const effect = calloc(1, sizeof *effect);
    if (effect == NULL) {
        return NULL;
    }
    effect->instance.table = &effectTable;
    atomic_store(&effect->gain, 0.5F);
    return &effect->instance;
}

REPLACEABLE uint32_t ZRDSPAPI_Free(DspInstance* instance) {
    free(instance);
    return 0;
}

/// Any rate and count that there are; more channels than planes become two.
REPLACEABLE uint32_t ZRDSPAPI_IsInputFormatSupported(DspInstance* instance, EngineFormat* requested,
                                                     EngineFormat* opposite) {
    (void)instance, (void)opposite;
    if (requested->sampleRate == 0 || requested->channelCount < 1) {
        return KORVA_FORMAT_REFUSED;
    }
    if (requested->channelCount > KORVA_PLANES) {
        memset(requested, 0, sizeof *requested);
        requested->channelMask = 0x3;
        requested->channelCount = 2;
        requested->sampleRate = 48000;
        requested->planeOfChannel[1] = KORVA_FRONT_RIGHT;
        requested->speakerOfPlane[0] = 1;
        requested->speakerOfPlane[1] = 2;
        return KORVA_FORMAT_CHANGED;
    }
    return KORVA_FORMAT_ACCEPTED;
}

REPLACEABLE uint32_t ZRDSPAPI_IsOutputFormatSupported(DspInstance* instance, EngineFormat* requested,
                                                      EngineFormat* opposite) {
    return ZRDSPAPI_IsInputFormatSupported(instance, requested, opposite);
}

REPLACEABLE uint32_t ZRDSPAPI_IsCaptureFormatSupported(DspInstance* instance, EngineFormat* requested) {
    (void)instance, (void)requested;
    return KORVA_FORMAT_ACCEPTED;
}

REPLACEABLE uint8_t ZRDSPAPI_Initialize(DspInstance* instance, EngineFormat* in, EngineFormat* out,
                                        EngineFormat* capture) {
    (void)capture;
    makeReady((Effect*)instance, in, out);
    return 1;
}

REPLACEABLE void ZRDSPAPI_Uninitialize(DspInstance* instance) {
    (void)instance;
}

REPLACEABLE void ZRDSPAPI_Clear(DspInstance* instance, int32_t which) {
    (void)which;
    Effect* const effect = (Effect*)instance;
    memset(effect->memory, 0, sizeof effect->memory);
}

/// The volume is all that it knows.
REPLACEABLE uint32_t ZRDSPAPI_SetParameter(DspInstance* instance, int32_t bank, int32_t id, int32_t index,
                                           const void* data, uint32_t size) {
    (void)index;
    Effect* const effect = (Effect*)instance;
    atomic_fetch_add(&effect->parameterBytes, size);
    if (bank == KORVA_BANK_ENDPOINT && id == KORVA_PARAMETER_VOLUME_DB && size == sizeof(float)) {
        float decibels = 0;
        memcpy(&decibels, data, sizeof decibels);
        atomic_store(&effect->gain, isfinite(decibels) && decibels < 0 ? powf(10.0F, decibels / 20) : 0.5F);
    }
    return 0;
}

static uint32_t give(const void* bytes, uint32_t size, void* out, uint32_t outSize) {
    if (outSize < size) {
        return 0;
    }
    memcpy(out, bytes, size);
    return size;
}

REPLACEABLE uint32_t ZRDSPAPI_SetGetData(DspInstance* instance, int32_t bank, int32_t id, const void* in,
                                         uint32_t inSize, void* out, uint32_t outSize) {
    Effect* const effect = (Effect*)instance;
    const uint32_t version = 1;
    const uint32_t frames = atomic_load(&effect->frames);
    float levels[KORVA_PLANES];
    for (int plane = 0; plane < KORVA_PLANES; ++plane) {
        levels[plane] = atomic_load(&effect->levels[plane]);
    }
    if (bank != KORVA_BANK_ENGINE) {
        return 0;
    }
    switch (id) {
        case KORVA_DATA_MODULE_VERSION:
            return give(&version, sizeof version, out, outSize);
        case KORVA_DATA_FRAME_COUNT:
            return give(&frames, sizeof frames, out, outSize);
        case KORVA_DATA_OUTPUT_METERS:
            return give(levels, sizeof levels, out, outSize);
        case KORVA_DATA_METERS_ENABLED:
            if (inSize == 1) {
                atomic_store(&effect->metersEnabled, *(const uint8_t*)in != 0);
            }
            return 0;
        default:
            return 0;
    }
}

REPLACEABLE void ZRDSPAPI_WakeUp(DspInstance* instance) {
    (void)instance;
}

REPLACEABLE void ZRDSPAPI_SetInputGain(DspInstance* instance, float gain) {
    (void)instance, (void)gain;
}

REPLACEABLE void ZRDSPAPI_Process(DspInstance* instance, DspBlock* block) {
    effectProcess(instance, block);
}

REPLACEABLE void ZRDSPAPI_Capture(DspInstance* instance, DspBlock* block) {
    effectProcess(instance, block);
}
