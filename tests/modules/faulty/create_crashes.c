// Reads through a null pointer when it makes an instance.
#include "tests/modules/faulty/honest_module.h"

static int* volatile nothing;

__attribute__((no_sanitize("undefined"))) DspInstance* ZRDSPAPI_Create(const char* text, uint32_t length) {
    (void)text, (void)length;
    *nothing = 1;
    return 0;
}
