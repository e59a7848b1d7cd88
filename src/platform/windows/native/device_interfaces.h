// Audio devices and their volume, from the system's own headers.
#pragma once

#include <mmdeviceapi.h>

#include <endpointvolume.h>
