#include "platform/standard_streams.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <cerrno>

namespace korva::platform {
namespace {

/// Of a call that has failed, whether it says so or not.
std::error_code lastFailure() {
    return {errno != 0 ? errno : EIO, std::generic_category()};
}

}  // namespace

std::error_code prepareStandardStreams() {
    for (int stream = STDIN_FILENO; stream <= STDERR_FILENO; ++stream) {
        if (fcntl(stream, F_GETFD) >= 0 || errno != EBADF) {
            continue;
        }
        // The wrong way round on purpose: whoever reads or writes it gets an error. The lowest free number,
        // which is this stream's, is what open gives.
        const int way = stream == STDIN_FILENO ? O_WRONLY : O_RDONLY;
        if (open("/dev/null", way) != stream) {
            return lastFailure();
        }
    }
    return {};
}

bool isTerminal(std::FILE* stream) {
    return isatty(fileno(stream)) == 1;
}

std::error_code writeText(std::FILE* stream, std::string_view text) {
    errno = 0;
    const bool isWritten = std::fwrite(text.data(), 1, text.size(), stream) == text.size();
    return isWritten && std::fflush(stream) == 0 ? std::error_code() : lastFailure();
}

WaitHandle standardOutput() noexcept {
    return STDOUT_FILENO;
}

bool hasOutputReader() noexcept {
    pollfd output = {STDOUT_FILENO, 0, 0};  // Errors are told of without being asked for.
    return poll(&output, 1, 0) != 1 || (output.revents & POLLERR) == 0;
}

}  // namespace korva::platform
