// Never comes back from the call that makes it ready.
#include <stdio.h>
#include <unistd.h>

#include "honest_module.h"

uint8_t ZRDSPAPI_Initialize(DspInstance* instance, EngineFormat* in, EngineFormat* out,
                            EngineFormat* capture) {
    (void)instance, (void)in, (void)out, (void)capture;
    fputs("hanging\n", stderr);
    while (1) {
        pause();
    }
}
