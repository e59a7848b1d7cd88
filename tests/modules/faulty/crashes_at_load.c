// Writes through a null pointer as soon as it is loaded.
#include "tests/modules/faulty/honest_module.h"

static int* volatile nothing;

__attribute__((no_sanitize("undefined"))) __attribute__((constructor)) static void begin(void) {
    *nothing = 1;
}
