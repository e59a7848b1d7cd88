// The least that a module needs to be heard: it makes everything half as loud.
#include <stdlib.h>

#include "korva/dsp_module.h"

static void doNothing(void) {}

static void process(DspInstance* instance, DspBlock* block) {
    (void)instance;
    for (int plane = 0; plane < KORVA_PLANES; ++plane) {
        for (uint32_t i = 0; i < block->frames; ++i) {
            block->channels[plane][i] *= 0.5F;
        }
    }
}

static uint32_t hasNoHardware(DspInstance* instance) {
    (void)instance;
    return 0;
}

static const DspInstanceTable table = {
    .unused = {doNothing, doNothing, doNothing, doNothing, doNothing, doNothing, doNothing, doNothing,
               doNothing, doNothing, doNothing},
    .process = process,
    .capture = process,
    .isHardwareAvailable = hasNoHardware,
};

DspInstance* ZRDSPAPI_Create(const char* text, uint32_t length) {
    (void)text;
    (void)length;
    DspInstance* instance = malloc(sizeof *instance);
    if (instance != NULL) {
        instance->table = &table;
    }
    return instance;
}

uint32_t ZRDSPAPI_Free(DspInstance* instance) {
    free(instance);
    return 0;
}

uint8_t ZRDSPAPI_Initialize(DspInstance* instance, EngineFormat* in, EngineFormat* out,
                            EngineFormat* capture) {
    (void)instance, (void)in, (void)out, (void)capture;
    return 1;
}

void ZRDSPAPI_Uninitialize(DspInstance* instance) {
    (void)instance;
}

void ZRDSPAPI_Process(DspInstance* instance, DspBlock* block) {
    process(instance, block);
}
