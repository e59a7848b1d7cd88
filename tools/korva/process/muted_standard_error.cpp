#include "korva/process/muted_standard_error.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>

namespace korva::tool {

MutedStandardError::MutedStandardError() : kept(fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1)) {
    const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
    if (kept >= 0 && nowhere >= 0) {
        std::fflush(stderr);
        dup2(nowhere, STDERR_FILENO);
    }
    if (nowhere >= 0) {
        close(nowhere);
    }
}

MutedStandardError::~MutedStandardError() {
    if (kept >= 0) {
        std::fflush(stderr);
        dup2(kept, STDERR_FILENO);
        close(kept);
    }
}

}  // namespace korva::tool
