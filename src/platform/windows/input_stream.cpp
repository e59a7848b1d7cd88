#include "platform/input_stream.h"

#include <windows.h>

#include <algorithm>

#include "platform/interruption.h"
#include "platform/unicode.h"
#include "platform/windows/blocking_call.h"
#include "platform/windows/system_error.h"

namespace korva::platform {
namespace {

/// Others may do with the file what they like. Without the semantics a folder can't be opened at all.
HANDLE openFile(const std::string& path) {
    return CreateFileW(toWide(path).c_str(), GENERIC_READ,
                       FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr, OPEN_EXISTING,
                       FILE_FLAG_BACKUP_SEMANTICS, nullptr);
}

/// The other end of a pipe is closed: that is its end.
bool isEnd(DWORD error) {
    return error == ERROR_BROKEN_PIPE || error == ERROR_HANDLE_EOF;
}

}  // namespace

InputStream::InputStream(const std::string& path, std::error_code& error)
    : stream(openFile(path)), isOwn(stream != INVALID_HANDLE_VALUE) {
    error = isOwn ? std::error_code() : lastSystemError();
}

InputStream::InputStream() noexcept : stream(GetStdHandle(STD_INPUT_HANDLE)), isOwn(false) {}

InputStream::~InputStream() {
    if (isOwn) {
        CloseHandle(stream);
    }
}

bool InputStream::isFolder() const noexcept {
    BY_HANDLE_FILE_INFORMATION file{};
    return GetFileInformationByHandle(stream, &file) &&
           (file.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

InputRead InputStream::read(std::span<char> bytes) {
    constexpr std::size_t mostBytes = 1 << 20;
    const auto length = static_cast<DWORD>(std::min(bytes.size(), mostBytes));
    DWORD count = 0;
    DWORD error = ERROR_SUCCESS;
    if (const BlockingCall call; call && !ReadFile(stream, bytes.data(), length, &count, nullptr)) {
        error = GetLastError();
    }
    // What comes of a key at a console is an empty read, before or after the key itself.
    if (interruption() != 0 || error == ERROR_OPERATION_ABORTED) {
        return {.isInterrupted = true};
    }
    if (error != ERROR_SUCCESS && !isEnd(error)) {
        return {.error = systemError(error)};
    }
    return {.byteCount = count};
}

}  // namespace korva::platform
