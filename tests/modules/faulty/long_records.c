// Writes more than a format record has.
#include "tests/modules/faulty/honest_module.h"

uint32_t ZRDSPAPI_IsOutputFormatSupported(DspInstance* instance, EngineFormat* requested,
                                          EngineFormat* opposite) {
    (void)instance, (void)opposite;
    volatile uint8_t* const bytes = (volatile uint8_t*)requested;
    bytes[sizeof *requested] = 0;
    return KORVA_FORMAT_ACCEPTED;
}
