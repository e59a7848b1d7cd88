// IPropertyStore, from the system's own headers.
#pragma once

#include <propsys.h>
