// A library that is no module.
#include "korva/dsp_module.h"

void ZRDSPAPI_Process(DspInstance* instance, DspBlock* block) {
    (void)instance, (void)block;
}
