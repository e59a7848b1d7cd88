// A module that makes an instance and ends it. Everything else is exported by a library that it needs, and
// nothing by itself.
#include "korva/dsp_module.h"
#include "tests/modules/leaning/support.h"

static void callUnused(void) {}

static void process(DspInstance* instance, DspBlock* block) {
    (void)instance, (void)block;
    countForeignCall();
}

static uint32_t isHardwareAvailable(DspInstance* instance) {
    (void)instance;
    return 1;
}

static const DspInstanceTable table = {
    .unused = {callUnused, callUnused, callUnused, callUnused, callUnused, callUnused, callUnused, callUnused,
               callUnused, callUnused, callUnused},
    .process = process,
    .capture = process,
    .isHardwareAvailable = isHardwareAvailable,
};
static DspInstance onlyInstance = {&table};

DspInstance* ZRDSPAPI_Create(const char* text, uint32_t length) {
    (void)text, (void)length;
    return &onlyInstance;
}

uint32_t ZRDSPAPI_Free(DspInstance* instance) {
    (void)instance;
    return 0;
}
