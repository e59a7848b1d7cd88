// One processing call without processing: what passes when there is nothing to do to the sound.
#pragma once

#include <cstdint>

#include "platform/published/audio_records.h"

namespace korva::rt {

using published::APO_CONNECTION_PROPERTY;

/// Whether a call does anything at all for this input.  [audio, rt]
[[nodiscard]] inline bool isProcessable(const APO_CONNECTION_PROPERTY& input) noexcept {
    return input.u32BufferFlags == published::BUFFER_VALID ||
           input.u32BufferFlags == published::BUFFER_SILENT;
}

/// Whether a connection's samples count as zeros: it says so, or has no buffer.  [audio, rt]
[[nodiscard]] inline bool isSilent(const APO_CONNECTION_PROPERTY& connection) noexcept {
    return connection.u32BufferFlags == published::BUFFER_SILENT || connection.pBuffer == 0;
}

/// Sets the output's flag and frame count as every call that does something leaves them.  [audio, rt]
inline void finishOutput(const APO_CONNECTION_PROPERTY& input, APO_CONNECTION_PROPERTY& output) noexcept {
    output.u32BufferFlags = isSilent(output) ? published::BUFFER_SILENT : published::BUFFER_VALID;
    output.u32ValidFrameCount = input.u32ValidFrameCount;
}

/// Copies the input's samples to the output, or zeros the output where either side is silent. A buffer that
/// is both stays as it is, silent or not.  [audio, rt]
void copySamples(const APO_CONNECTION_PROPERTY& input, const APO_CONNECTION_PROPERTY& output,
                 std::uint32_t samplesPerFrame) noexcept;

/// A whole call that copies the first input to the first output. `samplesPerFrame` 0 copies nothing and still
/// sets flag and count. Without a connection, or with an input flag that is neither valid nor silent, nothing
/// changes.  [audio, rt]
void directCopy(std::uint32_t inputCount, APO_CONNECTION_PROPERTY* const* inputs, std::uint32_t outputCount,
                APO_CONNECTION_PROPERTY* const* outputs, std::uint32_t samplesPerFrame) noexcept;

}  // namespace korva::rt
