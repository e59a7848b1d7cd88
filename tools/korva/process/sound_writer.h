// A sound file that takes what the audio engine would play.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "korva/process/layouts.h"

namespace korva::tool {

/// Writes a file of the kind that its name's ending says: 32-bit floats where the kind holds them, and then
/// each sample as it is. Other kinds stay within full scale, and get silence for a sample that is no number.
/// The speakers' mask is kept where the kind can. Nothing of the file is seen before `finish`.
class SoundWriter {
public:
    /// Throws `ToolError` when the ending is unknown, the kind can't take the format (or, if the length is
    /// known, the length), or the file can't be written.
    SoundWriter(const std::string& path, const SoundFormat& format,
                std::optional<std::uint64_t> expectedFrames);
    ~SoundWriter();
    SoundWriter(const SoundWriter&) = delete;
    SoundWriter& operator=(const SoundWriter&) = delete;

    /// "WAV, 32-bit float", for instance.
    [[nodiscard]] const std::string& kind() const;

    /// Whether the file goes where standard output goes.
    [[nodiscard]] bool goesToStandardOutput() const;

    /// Appends frames (shape `count` x channels, interleaved). Throws when that fails.  [blocks]
    void write(const float* samples, std::uint32_t count);

    /// Completes the file and puts it in its place. Throws when that fails or a signal came; then the place
    /// is as it was.  [blocks]
    void finish();

private:
    struct Sink;
    std::unique_ptr<Sink> sink;
};

}  // namespace korva::tool
