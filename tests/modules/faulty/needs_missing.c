// Needs a function that nobody has.
#include "honest_module.h"

void functionThatNobodyHas(void);

void ZRDSPAPI_WakeUp(DspInstance* instance) {
    (void)instance;
    functionThatNobodyHas();
}
