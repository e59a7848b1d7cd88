// Holds a mutex until it is killed: an audio object's process, as others see it.
#include <unistd.h>

#include <cstdio>
#include <cstdlib>

#include "platform/named_mutex.h"

int main(int argumentCount, char** arguments) {
    if (argumentCount != 2) {
        return EXIT_FAILURE;
    }
    const auto mutex = korva::platform::NamedMutex::create(arguments[1]);
    if (!mutex) {
        return EXIT_FAILURE;
    }
    std::puts("held");
    std::fflush(stdout);
    pause();
    return EXIT_SUCCESS;
}
