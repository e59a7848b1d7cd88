// Ends the process when it makes an instance.
#include <stdio.h>
#include <stdlib.h>

#include "tests/modules/faulty/honest_module.h"

DspInstance* ZRDSPAPI_Create(const char* text, uint32_t length) {
    (void)text, (void)length;
    fputs("no licence found\n", stderr);
    _Exit(3);
}
