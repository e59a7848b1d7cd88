// What the system knows a thread by.
#pragma once

#include <pthread.h>

namespace korva::platform {

using ThreadHandle = pthread_t;

}  // namespace korva::platform
