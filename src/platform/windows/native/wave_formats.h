// The published wave formats, from the system's own headers.
#pragma once

#include <windows.h>

#include <mmreg.h>

#include <ks.h>

#include <ksmedia.h>
