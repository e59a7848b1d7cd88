// Begins its second life with the sound of the first.
#include "tests/modules/faulty/honest_module.h"

uint8_t ZRDSPAPI_Initialize(DspInstance* instance, EngineFormat* in, EngineFormat* out,
                            EngineFormat* capture) {
    (void)capture;
    Effect* const effect = (Effect*)instance;
    effect->inPlanes = planesOfFormat(in);
    effect->outPlanes = planesOfFormat(out);
    return 1;
}
