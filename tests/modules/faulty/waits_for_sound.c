// Waits for ever when a parameter comes while sound runs.
#include <unistd.h>

#include "tests/modules/faulty/honest_module.h"

uint32_t ZRDSPAPI_SetParameter(DspInstance* instance, int32_t bank, int32_t id, int32_t index,
                               const void* data, uint32_t size) {
    (void)bank, (void)id, (void)index, (void)data, (void)size;
    while (atomic_load(&((Effect*)instance)->frames) != 0) {
        pause();
    }
    return 0;
}
