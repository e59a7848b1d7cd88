// Keeps a pointer to the text, which is freed, and reads there later.
#include <stdlib.h>

#include "tests/modules/faulty/honest_module.h"

static const char* volatile kept;

DspInstance* ZRDSPAPI_Create(const char* text, uint32_t length) {
    (void)length;
    Effect* const effect = calloc(1, sizeof *effect);
    effect->instance.table = &effectTable;
    kept = text;
    return &effect->instance;
}

uint8_t ZRDSPAPI_Initialize(DspInstance* instance, EngineFormat* in, EngineFormat* out,
                            EngineFormat* capture) {
    (void)capture;
    makeReady((Effect*)instance, in, out);
    return kept[0] == '{';
}
