// What a module tells of itself: each time something else. Only the bytes of its parameters stay: they are
// asked for after each change of an instance's key, and would change it again.
#include <string.h>

#include "korva/dsp_module.h"

uint32_t ZRDSPAPI_SetGetData(DspInstance* instance, int32_t bank, int32_t id, const void* in, uint32_t inSize,
                             void* out, uint32_t outSize) {
    static const uint32_t constant = 1;
    static uint32_t count = 0;
    (void)instance, (void)bank, (void)in, (void)inSize;
    count += id != KORVA_DATA_PARAMETER_BYTES;
    for (uint32_t at = 0; at + sizeof count <= outSize; at += sizeof count) {
        memcpy((char*)out + at, id == KORVA_DATA_PARAMETER_BYTES ? &constant : &count, sizeof count);
    }
    return outSize;
}
