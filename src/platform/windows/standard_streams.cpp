#include "platform/standard_streams.h"

#include <windows.h>
// After it, on whose types it builds.
#include <fcntl.h>
#include <io.h>
#include <winternl.h>

#include <algorithm>

#include "platform/unicode.h"
#include "platform/windows/system_error.h"

namespace korva::platform {
namespace {

HANDLE handleOf(std::FILE* stream) {
    return reinterpret_cast<HANDLE>(_get_osfhandle(_fileno(stream)));
}

bool isConsole(HANDLE stream) {
    DWORD mode = 0;
    return GetConsoleMode(stream, &mode) != FALSE;
}

std::error_code writeToConsole(HANDLE console, WideView text) {
    constexpr std::size_t mostUnits = 8192;  // A console takes 64 KiB at once, in all.
    while (!text.empty()) {
        DWORD count = 0;
        if (!WriteConsoleW(console, text.data(), static_cast<DWORD>(std::min(text.size(), mostUnits)), &count,
                           nullptr)) {
            return lastSystemError();
        }
        text.remove_prefix(count);
    }
    return {};
}

std::error_code writeBytes(HANDLE file, std::string_view bytes) {
    constexpr std::size_t mostBytes = 1 << 20;
    while (!bytes.empty()) {
        DWORD count = 0;
        if (!WriteFile(file, bytes.data(), static_cast<DWORD>(std::min(bytes.size(), mostBytes)), &count,
                       nullptr)) {
            return lastSystemError();
        }
        bytes.remove_prefix(count);
    }
    return {};
}

/// What a pipe tells to each end; no header of the compiler's has it.
struct LocalPipe {
    ULONG type;
    ULONG configuration;
    ULONG maximumInstances;
    ULONG currentInstances;
    ULONG inboundQuota;
    ULONG readDataAvailable;
    ULONG outboundQuota;
    ULONG writeQuotaAvailable;
    ULONG state;
    ULONG end;
};
constexpr auto localPipeClass = static_cast<FILE_INFORMATION_CLASS>(24);
constexpr ULONG connectedState = 3;

}  // namespace

std::error_code prepareStandardStreams() {
    for (std::FILE* const stream : {stdin, stdout, stderr}) {
        // A stream that isn't there has no number, and stays so: files are opened past these.
        if (const int number = _fileno(stream); number >= 0) {
            _setmode(number, _O_BINARY);
        }
    }
    return {};
}

bool isTerminal(std::FILE* stream) {
    return isConsole(handleOf(stream));
}

std::error_code writeText(std::FILE* stream, std::string_view text) {
    const HANDLE handle = handleOf(stream);
    std::fflush(stream);
    return isConsole(handle) ? writeToConsole(handle, toWide(text)) : writeBytes(handle, text);
}

WaitHandle standardOutput() noexcept {
    return GetStdHandle(STD_OUTPUT_HANDLE);
}

bool hasOutputReader() noexcept {
    LocalPipe pipe{};
    IO_STATUS_BLOCK status{};
    const NTSTATUS result =
        NtQueryInformationFile(standardOutput(), &status, &pipe, sizeof(pipe), localPipeClass);
    return result < 0 || pipe.state == connectedState;
}

}  // namespace korva::platform
