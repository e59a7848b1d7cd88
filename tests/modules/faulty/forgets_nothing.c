// Keeps the old sound when it is told to forget it.
#include "tests/modules/faulty/honest_module.h"

void ZRDSPAPI_Clear(DspInstance* instance, int32_t which) {
    (void)instance, (void)which;
}
