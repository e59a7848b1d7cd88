#include "korva/standard_streams.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <cerrno>

#include "korva/errors.h"

namespace korva::tool {

void reserveStandardStreams() {
    for (int stream = STDIN_FILENO; stream <= STDERR_FILENO; ++stream) {
        if (fcntl(stream, F_GETFD) >= 0 || errno != EBADF) {
            continue;
        }
        // The wrong way round on purpose: whoever reads or writes it gets an error. The lowest free number,
        // which is this stream's, is what open gives.
        const int way = stream == STDIN_FILENO ? O_WRONLY : O_RDONLY;
        if (open("/dev/null", way) != stream) {
            fail("cannot open /dev/null: {}", systemMessage(errno));
        }
    }
}

bool isTerminal(std::FILE* stream) {
    return isatty(fileno(stream)) == 1;
}

bool isStandardOutput(const struct stat& file) {
    struct stat output {};
    return !S_ISCHR(file.st_mode) && fstat(STDOUT_FILENO, &output) == 0 && output.st_dev == file.st_dev &&
           output.st_ino == file.st_ino;
}

void printOutput(std::string_view text) {
    errno = 0;
    const bool written = std::fwrite(text.data(), 1, text.size(), stdout) == text.size();
    if (!written || std::fflush(stdout) != 0) {
        fail("cannot write to standard output: {}", systemMessage(errno));
    }
}

void expectReaderOfOutput() {
    pollfd output = {STDOUT_FILENO, 0, 0};  // Errors are told of without being asked for.
    if (poll(&output, 1, 0) == 1 && (output.revents & POLLERR) != 0) {
        fail("cannot write to standard output: {}", systemMessage(EPIPE));
    }
}

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
