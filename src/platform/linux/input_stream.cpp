#include "platform/input_stream.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "platform/interruption.h"

namespace korva::platform {
namespace {

std::error_code lastFailure() {
    return {errno, std::generic_category()};
}

}  // namespace

InputStream::InputStream(const std::string& path, std::error_code& error)
    // A pipe that nobody writes yet is waited for where an interruption can end it, not here.
    : stream(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK)), isOwn(stream >= 0) {
    error = isOwn ? std::error_code() : lastFailure();
}

InputStream::InputStream() noexcept : stream(STDIN_FILENO), isOwn(false) {}

InputStream::~InputStream() {
    if (isOwn) {
        close(stream);
    }
}

bool InputStream::isFolder() const noexcept {
    struct stat status {};
    return fstat(stream, &status) == 0 && S_ISDIR(status.st_mode);
}

InputRead InputStream::read(std::span<char> bytes) {
    while (true) {
        if (waitUntilReady(stream, Direction::read, waitForever) == Wait::interrupted) {
            return {.isInterrupted = true};
        }
        const ssize_t count = ::read(stream, bytes.data(), bytes.size());
        if (count >= 0) {
            return {.byteCount = static_cast<std::size_t>(count)};
        }
        if (errno != EINTR && errno != EAGAIN) {
            return {.error = lastFailure()};
        }
    }
}

}  // namespace korva::platform
