// A library that a module needs.
#pragma once

#include <stdint.h>

#include "korva/dsp_module.h"

ZRDSPAPI_EXPORT void countForeignCall(void);

/// How many functions were called that bear names of the module interface, and how often the one above was.
ZRDSPAPI_EXPORT uint32_t foreignCalls(void);
