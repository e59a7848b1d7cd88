// Has no entry by which the host lets sound through, and no end of an instance.
#include <stdlib.h>

#include "korva/dsp_module.h"

static void doNothing(void) {}

static void process(DspInstance* instance, DspBlock* block) {
    (void)instance, (void)block;
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
static DspInstance instance = {&table};

DspInstance* ZRDSPAPI_Create(const char* text, uint32_t length) {
    (void)text, (void)length;
    return &instance;
}
