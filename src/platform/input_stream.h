// Bytes from a file, a pipe or a device, read once from the first to the last.
#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <system_error>

#include "platform/wait_handles.h"

namespace korva::platform {

/// How a read ended.
struct InputRead {
    std::size_t byteCount = 0;   ///< 0 at the end, or if it failed.
    bool isInterrupted = false;  ///< See platform/interruption.h; nothing was read then.
    std::error_code error{};
};

class InputStream {
public:
    /// Opens a file by its name in UTF-8, a folder too, and waits for nobody. No stream if `error` is set.
    InputStream(const std::string& path, std::error_code& error);
    /// Standard input, which stays open.
    InputStream() noexcept;
    ~InputStream();
    InputStream(const InputStream&) = delete;
    InputStream& operator=(const InputStream&) = delete;

    [[nodiscard]] bool isFolder() const noexcept;

    /// As much as can be had at once, after waiting for the first byte, or for the end, or for an
    /// interruption.  [blocks]
    [[nodiscard]] InputRead read(std::span<char> bytes);

private:
    WaitHandle stream;
    bool isOwn;
};

}  // namespace korva::platform
