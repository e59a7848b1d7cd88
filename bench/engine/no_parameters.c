// A module that takes no notice of parameters.
#include "korva/dsp_module.h"

uint32_t ZRDSPAPI_SetParameter(DspInstance* instance, int32_t bank, int32_t id, int32_t index,
                               const void* data, uint32_t size) {
    (void)instance, (void)bank, (void)id, (void)index, (void)data, (void)size;
    return 0;
}
