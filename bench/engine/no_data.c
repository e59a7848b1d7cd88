// A module that tells nothing of itself.
#include "korva/dsp_module.h"

uint32_t ZRDSPAPI_SetGetData(DspInstance* instance, int32_t bank, int32_t id, const void* in, uint32_t inSize,
                             void* out, uint32_t outSize) {
    (void)instance, (void)bank, (void)id, (void)in, (void)inSize, (void)out, (void)outSize;
    return 0;
}
