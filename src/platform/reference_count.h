// The type in which published interfaces count their references.
#pragma once

#include "native/reference_count.h"

static_assert(sizeof(korva::platform::ReferenceCount) == 4);
