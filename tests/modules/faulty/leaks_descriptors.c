// Opens a file for each instance and closes none.
#include <fcntl.h>
#include <stdlib.h>

#include "tests/modules/faulty/honest_module.h"

static volatile int file;

DspInstance* ZRDSPAPI_Create(const char* text, uint32_t length) {
    (void)text, (void)length;
    file = open("/dev/null", O_RDONLY | O_CLOEXEC);
    Effect* const effect = calloc(1, sizeof *effect);
    effect->instance.table = &effectTable;
    return &effect->instance;
}
