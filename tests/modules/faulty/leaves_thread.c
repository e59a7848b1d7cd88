// Starts a thread when it is loaded, which still runs when it is unloaded.
#include <pthread.h>
#include <time.h>

#include "tests/modules/faulty/honest_module.h"

static void* work(void* nothing) {
    const struct timespec moment = {0, 100000};
    while (nothing == NULL) {
        nanosleep(&moment, NULL);
    }
    return NULL;
}

__attribute__((constructor)) static void begin(void) {
    pthread_t thread;
    if (pthread_create(&thread, NULL, work, NULL) == 0) {
        pthread_detach(thread);
    }
}
