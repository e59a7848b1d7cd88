// Loses memory each time that it is made ready.
#include <stdlib.h>

#include "tests/modules/faulty/honest_module.h"

static void* volatile lost;

uint8_t ZRDSPAPI_Initialize(DspInstance* instance, EngineFormat* in, EngineFormat* out,
                            EngineFormat* capture) {
    (void)capture;
    makeReady((Effect*)instance, in, out);
    lost = malloc(1000);
    return lost != NULL;
}
