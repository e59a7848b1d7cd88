// Never comes back from the call that makes it ready. The number of its process goes to a file.
#include <stdio.h>
#include <stdlib.h>
#include <unistd.h>

#include "tests/modules/faulty/honest_module.h"

uint8_t ZRDSPAPI_Initialize(DspInstance* instance, EngineFormat* in, EngineFormat* out,
                            EngineFormat* capture) {
    (void)instance, (void)in, (void)out, (void)capture;
    const char* const name = getenv("HANGING_PROCESS");
    FILE* const file = name == NULL ? stderr : fopen(name, "w");
    if (file != NULL) {
        fprintf(file, "%d\n", (int)getpid());
        fflush(file);
    }
    while (1) {
        pause();
    }
}
