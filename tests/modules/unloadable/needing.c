// A module that can create, but needs a function of somebody else's.
#include <stddef.h>

#include "korva/dsp_module.h"

extern int somebodyElses(void);

DspInstance* ZRDSPAPI_Create(const char* text, uint32_t length) {
    (void)text;
    (void)length;
    (void)somebodyElses();
    return NULL;
}
