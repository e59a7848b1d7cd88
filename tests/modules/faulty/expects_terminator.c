// Takes the text for one that ends in a zero.
#include <stdlib.h>

#include "tests/modules/faulty/honest_module.h"

DspInstance* ZRDSPAPI_Create(const char* text, uint32_t length) {
    (void)length;
    const char* volatile end = text;
    while (*end != '\0') {
        ++end;
    }
    Effect* const effect = calloc(1, sizeof *effect);
    effect->instance.table = &effectTable;
    return &effect->instance;
}
