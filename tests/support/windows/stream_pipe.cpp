#include "tests/support/stream_pipe.h"

#include <windows.h>

#include <atomic>
#include <stdexcept>
#include <utility>

namespace korva::test {
namespace {

constexpr DWORD pipeSize = 65536;

std::string newName() {
    static std::atomic<unsigned> count{0};
    return "\\\\.\\pipe\\korva_test_" + std::to_string(GetCurrentProcessId()) + "_" +
           std::to_string(count.fetch_add(1));
}

void closeEnd(HANDLE& end) {
    if (end != INVALID_HANDLE_VALUE) {
        CloseHandle(std::exchange(end, INVALID_HANDLE_VALUE));
    }
}

}  // namespace

struct StreamPipe::Ends {
    HANDLE readEnd = INVALID_HANDLE_VALUE;
    HANDLE writeEnd = INVALID_HANDLE_VALUE;
};

StreamPipe::StreamPipe() : ends(std::make_unique<Ends>()) {
    const std::string name = newName();
    ends->writeEnd = CreateNamedPipeA(name.c_str(), PIPE_ACCESS_OUTBOUND | FILE_FLAG_OVERLAPPED,
                                      PIPE_TYPE_BYTE | PIPE_WAIT, 1, pipeSize, pipeSize, 0, nullptr);
    ends->readEnd = CreateFileA(name.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    if (ends->writeEnd == INVALID_HANDLE_VALUE || ends->readEnd == INVALID_HANDLE_VALUE) {
        throw std::runtime_error("no pipe");
    }
}

StreamPipe::~StreamPipe() {
    closeEnd(ends->readEnd);
    closeEnd(ends->writeEnd);
}

platform::StreamHandle StreamPipe::takeWriteEnd() {
    return std::exchange(ends->writeEnd, INVALID_HANDLE_VALUE);
}

std::string StreamPipe::read(std::size_t count) {
    std::string bytes(count, '\0');
    std::size_t length = 0;
    while (length < count) {
        DWORD got = 0;
        if (!ReadFile(ends->readEnd, bytes.data() + length, static_cast<DWORD>(count - length), &got,
                      nullptr) ||
            got == 0) {
            break;
        }
        length += got;
    }
    bytes.resize(length);
    return bytes;
}

void StreamPipe::closeReadEnd() {
    closeEnd(ends->readEnd);
}

}  // namespace korva::test
