// IServiceProvider, from the system's own headers.
#pragma once

#include <objbase.h>

#include <servprov.h>
