// Locks on the audio thread, where nobody else wants the lock.
#include <pthread.h>

#include "tests/modules/faulty/honest_module.h"

static pthread_mutex_t mutex = PTHREAD_MUTEX_INITIALIZER;

void effectPlane(Effect* effect, int plane, float* samples, uint32_t frames) {
    (void)effect, (void)plane, (void)samples, (void)frames;
    pthread_mutex_lock(&mutex);
    pthread_mutex_unlock(&mutex);
}
