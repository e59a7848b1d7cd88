// Audio devices, from the system's own headers.
#pragma once

#include <mmdeviceapi.h>
