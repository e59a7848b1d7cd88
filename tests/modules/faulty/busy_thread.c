// No fault: while sound runs, a thread of its own allocates, locks and sleeps, as it may.
#include <pthread.h>
#include <stdlib.h>
#include <time.h>

#include "tests/modules/faulty/honest_module.h"

/// The honest module's, with a thread.
typedef struct BusyEffect {
    Effect effect;  // first
    pthread_t thread;
    atomic_bool isAskedToEnd;
} BusyEffect;

static void* work(void* given) {
    BusyEffect* const busy = given;
    const struct timespec moment = {0, 100000};
    while (!atomic_load(&busy->isAskedToEnd)) {
        void* volatile memory = malloc(1000);
        free(memory);
        nanosleep(&moment, NULL);
    }
    return NULL;
}

DspInstance* ZRDSPAPI_Create(const char* text, uint32_t length) {
    (void)text, (void)length;
    BusyEffect* const busy = calloc(1, sizeof *busy);
    busy->effect.instance.table = &effectTable;
    atomic_store(&busy->effect.gain, 0.5F);
    return &busy->effect.instance;
}

uint8_t ZRDSPAPI_Initialize(DspInstance* instance, EngineFormat* in, EngineFormat* out,
                            EngineFormat* capture) {
    (void)capture;
    BusyEffect* const busy = (BusyEffect*)instance;
    makeReady(&busy->effect, in, out);
    atomic_store(&busy->isAskedToEnd, 0);
    return pthread_create(&busy->thread, NULL, work, busy) == 0;
}

void ZRDSPAPI_Uninitialize(DspInstance* instance) {
    BusyEffect* const busy = (BusyEffect*)instance;
    atomic_store(&busy->isAskedToEnd, 1);
    pthread_join(busy->thread, NULL);
}
