// Exports what a module may export, and is none.
#include "tests/modules/leaning/support.h"

static uint32_t calls;

void countForeignCall(void) {
    ++calls;
}

uint32_t foreignCalls(void) {
    return calls;
}

uint8_t ZRDSPAPI_Initialize(DspInstance* instance, EngineFormat* in, EngineFormat* out,
                            EngineFormat* capture) {
    (void)instance, (void)in, (void)out, (void)capture;
    countForeignCall();
    return 1;
}

void ZRDSPAPI_WakeUp(DspInstance* instance) {
    (void)instance;
    countForeignCall();
}

void ZRDSPAPI_Process(DspInstance* instance, DspBlock* block) {
    (void)instance, (void)block;
    countForeignCall();
}
