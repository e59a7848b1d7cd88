// The published base types of Windows, from the system's own headers.
#pragma once

#include <basetsd.h>
#include <guiddef.h>
#include <windef.h>
#include <winnt.h>
