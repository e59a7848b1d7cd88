// Class objects, from the system's own headers.
#pragma once

#include <unknwn.h>
