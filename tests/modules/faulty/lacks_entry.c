// Leaves an entry of the table empty.
#include "tests/modules/faulty/honest_module.h"

const DspInstanceTable effectTable = {
    .unused = {doNothing, doNothing, doNothing, doNothing, doNothing, 0, doNothing, doNothing, doNothing,
               doNothing, doNothing},
    .process = effectProcess,
    .capture = effectProcess,
    .isHardwareAvailable = hasNoHardware,
};
