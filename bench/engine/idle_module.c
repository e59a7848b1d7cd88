// A module that does nothing, so that what is measured is its host. What it does with parameters and what
// it tells are in sources of their own.
#include <stddef.h>

#include "korva/dsp_module.h"

static void nothing(void) {}

static void process(DspInstance* instance, DspBlock* block) {
    (void)instance;
    (void)block;
}

static uint32_t hardware(DspInstance* instance) {
    (void)instance;
    return 0;
}

static const DspInstanceTable table = {
    .unused = {nothing, nothing, nothing, nothing, nothing, nothing, nothing, nothing, nothing, nothing,
               nothing},
    .process = process,
    .capture = process,
    .isHardwareAvailable = hardware,
};

static DspInstance theInstance = {&table};

DspInstance* ZRDSPAPI_Create(const char* text, uint32_t length) {
    (void)text;
    (void)length;
    return &theInstance;
}

uint32_t ZRDSPAPI_Free(DspInstance* instance) {
    (void)instance;
    return 0;
}

uint32_t ZRDSPAPI_IsInputFormatSupported(DspInstance* instance, EngineFormat* requested,
                                         EngineFormat* opposite) {
    (void)instance, (void)requested, (void)opposite;
    return KORVA_FORMAT_ACCEPTED;
}

uint32_t ZRDSPAPI_IsOutputFormatSupported(DspInstance* instance, EngineFormat* requested,
                                          EngineFormat* opposite) {
    (void)instance, (void)requested, (void)opposite;
    return KORVA_FORMAT_ACCEPTED;
}

uint32_t ZRDSPAPI_IsCaptureFormatSupported(DspInstance* instance, EngineFormat* requested) {
    (void)instance, (void)requested;
    return KORVA_FORMAT_ACCEPTED;
}

uint8_t ZRDSPAPI_Initialize(DspInstance* instance, EngineFormat* in, EngineFormat* out,
                            EngineFormat* capture) {
    (void)instance, (void)in, (void)out, (void)capture;
    return 1;
}

void ZRDSPAPI_Uninitialize(DspInstance* instance) {
    (void)instance;
}

void ZRDSPAPI_SetInputGain(DspInstance* instance, float gain) {
    (void)instance, (void)gain;
}

void ZRDSPAPI_Clear(DspInstance* instance, int32_t which) {
    (void)instance, (void)which;
}

void ZRDSPAPI_WakeUp(DspInstance* instance) {
    (void)instance;
}

void ZRDSPAPI_Process(DspInstance* instance, DspBlock* block) {
    process(instance, block);
}

void ZRDSPAPI_Capture(DspInstance* instance, DspBlock* block) {
    process(instance, block);
}
