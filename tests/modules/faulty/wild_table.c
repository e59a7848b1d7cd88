// Gives an instance whose table is nowhere.
#include <stdlib.h>

#include "tests/modules/faulty/honest_module.h"

DspInstance* ZRDSPAPI_Create(const char* text, uint32_t length) {
    (void)text, (void)length;
    Effect* const effect = calloc(1, sizeof *effect);
    effect->instance.table = (const DspInstanceTable*)(uintptr_t)64;
    return &effect->instance;
}
