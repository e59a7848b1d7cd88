// Writes through a null pointer when it is unloaded.
#include "tests/modules/faulty/honest_module.h"

static int* volatile nothing;

__attribute__((no_sanitize("undefined"))) __attribute__((destructor)) static void end(void) {
    *nothing = 1;
}
