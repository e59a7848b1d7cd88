// Answers a format test with a format that there is none of.
#include "tests/modules/faulty/honest_module.h"

uint32_t ZRDSPAPI_IsInputFormatSupported(DspInstance* instance, EngineFormat* requested,
                                         EngineFormat* opposite) {
    (void)instance, (void)opposite;
    if (requested->channelCount == 2 || requested->channelCount == 8) {
        return KORVA_FORMAT_ACCEPTED;
    }
    requested->channelCount = 200;
    return KORVA_FORMAT_CHANGED;
}
