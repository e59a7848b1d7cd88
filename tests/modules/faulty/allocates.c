// Allocates on the audio thread.
#include <stdlib.h>

#include "tests/modules/faulty/honest_module.h"

static void* volatile memory;

void effectPlane(Effect* effect, int plane, float* samples, uint32_t frames) {
    (void)effect, (void)plane, (void)samples, (void)frames;
    memory = malloc(16);
    free(memory);
}
