// A module that counts its calls. It is built once for each export, which it then lacks: a definition on the
// command line gives that function another name, here and in the header. Built with KORVA_CREATES_NULL, it
// makes no instance.
#include "korva/dsp_module.h"
#include "tests/modules/lacking/call_counts.h"

#ifdef KORVA_CREATES_NULL
static const int createsNull = 1;
#else
static const int createsNull = 0;
#endif

static CallCounts counts;

static void doNothing(void) {}

static void process(DspInstance* instance, DspBlock* block) {
    (void)instance, (void)block;
    ++counts.entryProcess;
}

static void capture(DspInstance* instance, DspBlock* block) {
    (void)instance, (void)block;
    ++counts.entryCapture;
}

static uint32_t isHardwareAvailable(DspInstance* instance) {
    (void)instance;
    ++counts.entryIsHardwareAvailable;
    return 1;
}

static const DspInstanceTable table = {
    .unused = {doNothing, doNothing, doNothing, doNothing, doNothing, doNothing, doNothing, doNothing,
               doNothing, doNothing, doNothing},
    .process = process,
    .capture = capture,
    .isHardwareAvailable = isHardwareAvailable,
};

// The library's own: one that is not freed is no leak.
static DspInstance onlyInstance = {&table};

ZRDSPAPI_EXPORT const CallCounts* callCounts(void) {
    return &counts;
}

DspInstance* ZRDSPAPI_Create(const char* text, uint32_t length) {
    (void)text, (void)length;
    ++counts.Create;
    return createsNull ? 0 : &onlyInstance;
}

uint32_t ZRDSPAPI_Free(DspInstance* instance) {
    (void)instance;
    ++counts.Free;
    return 0;
}

uint32_t ZRDSPAPI_IsInputFormatSupported(DspInstance* instance, EngineFormat* requested,
                                         EngineFormat* opposite) {
    (void)instance, (void)requested, (void)opposite;
    ++counts.IsInputFormatSupported;
    return 2;
}

uint32_t ZRDSPAPI_IsOutputFormatSupported(DspInstance* instance, EngineFormat* requested,
                                          EngineFormat* opposite) {
    (void)instance, (void)requested, (void)opposite;
    ++counts.IsOutputFormatSupported;
    return 3;
}

uint32_t ZRDSPAPI_IsCaptureFormatSupported(DspInstance* instance, EngineFormat* requested) {
    (void)instance, (void)requested;
    ++counts.IsCaptureFormatSupported;
    return 4;
}

uint8_t ZRDSPAPI_Initialize(DspInstance* instance, EngineFormat* in, EngineFormat* out,
                            EngineFormat* capture) {
    (void)instance, (void)in, (void)out, (void)capture;
    ++counts.Initialize;
    return 1;
}

void ZRDSPAPI_Uninitialize(DspInstance* instance) {
    (void)instance;
    ++counts.Uninitialize;
}

void ZRDSPAPI_SetInputGain(DspInstance* instance, float gain) {
    (void)instance, (void)gain;
    ++counts.SetInputGain;
}

uint32_t ZRDSPAPI_SetParameter(DspInstance* instance, int32_t bank, int32_t id, int32_t index,
                               const void* data, uint32_t size) {
    (void)instance, (void)bank, (void)id, (void)index, (void)data, (void)size;
    ++counts.SetParameter;
    return 5;
}

uint32_t ZRDSPAPI_SetGetData(DspInstance* instance, int32_t bank, int32_t id, const void* in, uint32_t inSize,
                             void* out, uint32_t outSize) {
    (void)instance, (void)bank, (void)id, (void)in, (void)inSize, (void)out, (void)outSize;
    ++counts.SetGetData;
    return 6;
}

void ZRDSPAPI_Clear(DspInstance* instance, int32_t which) {
    (void)instance, (void)which;
    ++counts.Clear;
}

void ZRDSPAPI_WakeUp(DspInstance* instance) {
    (void)instance;
    ++counts.WakeUp;
}

void ZRDSPAPI_Process(DspInstance* instance, DspBlock* block) {
    (void)instance, (void)block;
    ++counts.Process;
}

void ZRDSPAPI_Capture(DspInstance* instance, DspBlock* block) {
    (void)instance, (void)block;
    ++counts.Capture;
}
