// Is never unloaded; what else there is of it has no fault.
#include "korva/dsp_module.h"

void ZRDSPAPI_WakeUp(DspInstance* instance) {
    (void)instance;
}
