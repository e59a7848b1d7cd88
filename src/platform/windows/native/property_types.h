// Property keys and variants, from the system's own headers.
#pragma once

#include <objbase.h>
#include <propidl.h>
#include <propkeydef.h>
#include <wtypes.h>
