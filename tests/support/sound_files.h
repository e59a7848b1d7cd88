// Sound files for tests, made and read by the library's plain functions.
#pragma once

#include <sndfile.h>

#include <cstdint>
#include <string>
#include <vector>

#include "tests/support/file_bytes.h"

namespace korva::test {

/// A sound file's contents. Channels stand as in the file.
struct Sound {
    int channels = 0;
    int sampleRate = 48000;
    int format = SF_FORMAT_WAV | SF_FORMAT_FLOAT;
    std::vector<float> samples{};  ///< frames x channels, interleaved.
    std::vector<int> positions{};  ///< The channel map, SF_CHANNEL_MAP_...; empty without one.

    [[nodiscard]] std::size_t frames() const { return samples.size() / static_cast<std::size_t>(channels); }
};

/// Noise between -0.5 and 0.5: the same for the same numbers.
[[nodiscard]] Sound makeNoise(int channels, std::size_t frames);

/// The positions of a mask's speakers, lowest bit first.
[[nodiscard]] std::vector<int> positionsOfMask(std::uint32_t mask);

/// `makeNoise` as a WAV file with that mask.
[[nodiscard]] Sound makeNoiseFor(std::uint32_t mask, std::size_t frames);

/// Each throws when it fails.
void writeSound(const std::string& path, const Sound& sound);
[[nodiscard]] Sound readSound(const std::string& path);

/// Writes a mono WAV file of `frames` 8-bit zeros, which takes up no room on the disk.
void writeLongSound(const std::string& path, std::uint32_t frames);

}  // namespace korva::test
