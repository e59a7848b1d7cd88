// Answers whatever it is asked.
#include <string.h>

#include "tests/modules/faulty/honest_module.h"

uint32_t ZRDSPAPI_SetGetData(DspInstance* instance, int32_t bank, int32_t id, const void* in, uint32_t inSize,
                             void* out, uint32_t outSize) {
    (void)instance, (void)bank, (void)id, (void)in, (void)inSize;
    if (outSize != 0) {
        memset(out, 0, outSize);
    }
    return outSize;
}
