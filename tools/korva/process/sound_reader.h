// A sound file's frames, as the audio engine would deliver them.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "korva/process/layouts.h"

namespace korva::tool {

/// Reads a file from its beginning to its end, as 32-bit floats with the channels in the published order of
/// speakers. Memory: one block, whatever the file's length.
class SoundReader {
public:
    /// Opens a sound file of 1 to 8 channels. Throws `ToolError` with what is wrong with it: missing, no
    /// sound file, without frames, shorter than it says.
    explicit SoundReader(const std::string& path);
    ~SoundReader();
    SoundReader(const SoundReader&) = delete;
    SoundReader& operator=(const SoundReader&) = delete;

    /// The mask is 0 where the file has none.
    [[nodiscard]] const SoundFormat& format() const;
    /// Frames in the file; none where the file doesn't say.
    [[nodiscard]] std::optional<std::uint64_t> frames() const;
    /// "WAV (Microsoft), 32 bit float", for instance.
    [[nodiscard]] const std::string& kind() const;

    /// Fills `samples` (shape `count` x channels, interleaved) and gives the frames it got: fewer than
    /// `count` at the end only. Throws when a read fails, and at an end that comes too early.  [blocks]
    [[nodiscard]] std::uint32_t read(float* samples, std::uint32_t count);

private:
    struct Source;
    std::unique_ptr<Source> source;
};

}  // namespace korva::tool
