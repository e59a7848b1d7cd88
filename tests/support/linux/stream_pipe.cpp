#include "tests/support/stream_pipe.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <stdexcept>
#include <utility>

namespace korva::test {
namespace {

void closeEnd(int& end) {
    if (end >= 0) {
        close(std::exchange(end, -1));
    }
}

}  // namespace

struct StreamPipe::Ends {
    int readEnd = -1;
    int writeEnd = -1;
};

StreamPipe::StreamPipe() : ends(std::make_unique<Ends>()) {
    std::array<int, 2> made{};
    if (pipe2(made.data(), O_CLOEXEC) != 0) {
        throw std::runtime_error("no pipe");
    }
    ends->readEnd = made[0];
    ends->writeEnd = made[1];
}

StreamPipe::~StreamPipe() {
    closeEnd(ends->readEnd);
    closeEnd(ends->writeEnd);
}

platform::StreamHandle StreamPipe::takeWriteEnd() {
    return std::exchange(ends->writeEnd, -1);
}

std::string StreamPipe::read(std::size_t count) {
    std::string bytes(count, '\0');
    std::size_t length = 0;
    while (length < count) {
        const ssize_t got = ::read(ends->readEnd, bytes.data() + length, count - length);
        if (got == 0 || (got < 0 && errno != EINTR)) {
            break;
        }
        length += got > 0 ? static_cast<std::size_t>(got) : 0;
    }
    bytes.resize(length);
    return bytes;
}

void StreamPipe::closeReadEnd() {
    closeEnd(ends->readEnd);
}

}  // namespace korva::test
