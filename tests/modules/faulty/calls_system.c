// Calls the system on the audio thread, once in a while.
#include <sched.h>

#include "tests/modules/faulty/honest_module.h"

static atomic_uint calls;

void effectPlane(Effect* effect, int plane, float* samples, uint32_t frames) {
    (void)effect, (void)plane, (void)samples, (void)frames;
    if (atomic_fetch_add(&calls, 1) % 100 == 99) {
        sched_yield();
    }
}
