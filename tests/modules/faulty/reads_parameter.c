// Reads four bytes of any parameter, however many there are.
#include <string.h>

#include "tests/modules/faulty/honest_module.h"

static float value;

uint32_t ZRDSPAPI_SetParameter(DspInstance* instance, int32_t bank, int32_t id, int32_t index,
                               const void* data, uint32_t size) {
    (void)instance, (void)bank, (void)id, (void)index;
    if (size != 0) {
        memcpy(&value, data, sizeof value);
    }
    return value > 0;
}
