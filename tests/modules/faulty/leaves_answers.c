// Says that it gave an answer, and wrote none.
#include "tests/modules/faulty/honest_module.h"

uint32_t ZRDSPAPI_SetGetData(DspInstance* instance, int32_t bank, int32_t id, const void* in, uint32_t inSize,
                             void* out, uint32_t outSize) {
    (void)instance, (void)bank, (void)in, (void)inSize, (void)out;
    return id == KORVA_DATA_MODULE_VERSION && outSize >= 4 ? 4 : 0;
}
