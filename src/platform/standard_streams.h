// The three streams that every process is given.
#pragma once

#include <cstdio>
#include <string_view>
#include <system_error>

#include "platform/wait_handles.h"

namespace korva::platform {

/// Makes them fit for use: bytes go through them as they are, and no file that is opened later is taken for
/// one of those that the parent closed. To write to such a one remains an error. To be called before any file
/// is opened.
[[nodiscard]] std::error_code prepareStandardStreams();

[[nodiscard]] bool isTerminal(std::FILE* stream);

/// Writes all of `text`, UTF-8, to one of the streams, at once. A terminal shows its characters, whatever
/// the system's own encoding is.  [blocks]
[[nodiscard]] std::error_code writeText(std::FILE* stream, std::string_view text);

/// What `waitUntilReady` takes for standard output.
[[nodiscard]] WaitHandle standardOutput() noexcept;

/// False if standard output is a pipe whose reader is gone, as far as can be told without a write.
[[nodiscard]] bool hasOutputReader() noexcept;

}  // namespace korva::platform
