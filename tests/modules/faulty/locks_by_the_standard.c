// Takes the lock of the C standard's header on the audio thread.
#include <threads.h>

#include "tests/modules/faulty/honest_module.h"

static mtx_t mutex;

__attribute__((constructor)) static void begin(void) {
    mtx_init(&mutex, mtx_plain);
}

void effectPlane(Effect* effect, int plane, float* samples, uint32_t frames) {
    (void)effect, (void)plane, (void)samples, (void)frames;
    mtx_lock(&mutex);
    mtx_unlock(&mutex);
}
