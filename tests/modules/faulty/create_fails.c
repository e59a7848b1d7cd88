// Makes no instance.
#include "tests/modules/faulty/honest_module.h"

DspInstance* ZRDSPAPI_Create(const char* text, uint32_t length) {
    (void)text, (void)length;
    return 0;
}
