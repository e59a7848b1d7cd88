// Leaves a process behind that has a session of its own, and hangs. Its number goes to a file.
#include <stdio.h>
#include <stdlib.h>
#include <unistd.h>

#include "tests/modules/faulty/honest_module.h"

static void leaveProcess(void) {
    if (fork() != 0) {
        return;
    }
    setsid();
    if (fork() != 0) {
        _exit(0);
    }
    const char* const name = getenv("FORKED_PROCESS");
    FILE* const file = name == NULL ? NULL : fopen(name, "w");
    if (file != NULL) {
        fprintf(file, "%d\n", (int)getpid());
        fclose(file);
    }
    while (1) {
        pause();
    }
}

uint8_t ZRDSPAPI_Initialize(DspInstance* instance, EngineFormat* in, EngineFormat* out,
                            EngineFormat* capture) {
    (void)instance, (void)in, (void)out, (void)capture;
    leaveProcess();
    while (1) {
        pause();
    }
}
