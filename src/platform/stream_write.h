// Writing to a stream whose reader may be slow, until somebody wants it to stop.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>

#include "platform/wait_handles.h"

namespace korva::platform {

/// The writing end of a stream: of a pipe, for instance. On Windows it was opened for overlapped writing.
using StreamHandle = WaitHandle;

/// How a write ended.
struct StreamWrite {
    bool isDone = false;
    std::size_t byteCount = 0;  ///< That the stream took, if it is done.
    std::uint32_t error = 0;    ///< A number of the system's, if it isn't; 0 if a stop met its end.
};

/// One at a time may write.
class StreamWriter {
public:
    /// Closes the stream.
    virtual ~StreamWriter() = default;

    /// Whether there is a stream at all.
    [[nodiscard]] virtual bool isOpen() const noexcept = 0;

    /// Writes all of `data`, which isn't empty. While the stream doesn't take it, one of `stops` (at most
    /// `maxStopHandles`) ends the write: it isn't done then, though part of it may have gone out, and comes
    /// back when the system has let go of `data`. A write that the stream takes at once looks at no stop.
    /// [blocks]
    [[nodiscard]] virtual StreamWrite write(std::span<const std::byte> data,
                                            std::span<const WaitHandle> stops) noexcept = 0;
};

/// The write itself is waited for as well.
inline constexpr std::size_t maxStopHandles = maxWaitHandles - 1;

/// Takes over the stream, which may be none. On Linux a write to it never blocks from now on, for all that
/// share it. Raises `std::system_error` when the system has no means left; the stream is still the caller's
/// then.
[[nodiscard]] std::unique_ptr<StreamWriter> openStreamWriter(StreamHandle stream);

}  // namespace korva::platform
