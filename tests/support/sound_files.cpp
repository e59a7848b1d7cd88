#include "tests/support/sound_files.h"

#include <array>
#include <bit>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <stdexcept>

namespace korva::test {
namespace {

SNDFILE* openSound(const std::string& path, int mode, SF_INFO& info) {
    SNDFILE* const file = sf_open(path.c_str(), mode, &info);
    if (file == nullptr) {
        throw std::runtime_error(path + ": " + sf_strerror(nullptr));
    }
    return file;
}

void appendNumber(std::string& bytes, std::uint32_t value, int size) {
    for (int byte = 0; byte < size; ++byte) {
        bytes += static_cast<char>((value >> (8 * byte)) & 0xFF);
    }
}

}  // namespace

Sound makeNoise(int channels, std::size_t frames) {
    std::minstd_rand random(static_cast<unsigned>(channels) + 1);
    std::uniform_real_distribution<float> level(-0.5f, 0.5f);
    Sound sound{.channels = channels};
    for (std::size_t i = 0; i < frames * static_cast<std::size_t>(channels); ++i) {
        sound.samples.push_back(level(random));
    }
    return sound;
}

std::vector<int> positionsOfMask(std::uint32_t mask) {
    constexpr std::array<int, 18> positions = {SF_CHANNEL_MAP_LEFT,
                                               SF_CHANNEL_MAP_RIGHT,
                                               SF_CHANNEL_MAP_CENTER,
                                               SF_CHANNEL_MAP_LFE,
                                               SF_CHANNEL_MAP_REAR_LEFT,
                                               SF_CHANNEL_MAP_REAR_RIGHT,
                                               SF_CHANNEL_MAP_FRONT_LEFT_OF_CENTER,
                                               SF_CHANNEL_MAP_FRONT_RIGHT_OF_CENTER,
                                               SF_CHANNEL_MAP_REAR_CENTER,
                                               SF_CHANNEL_MAP_SIDE_LEFT,
                                               SF_CHANNEL_MAP_SIDE_RIGHT,
                                               SF_CHANNEL_MAP_TOP_CENTER,
                                               SF_CHANNEL_MAP_TOP_FRONT_LEFT,
                                               SF_CHANNEL_MAP_TOP_FRONT_CENTER,
                                               SF_CHANNEL_MAP_TOP_FRONT_RIGHT,
                                               SF_CHANNEL_MAP_TOP_REAR_LEFT,
                                               SF_CHANNEL_MAP_TOP_REAR_CENTER,
                                               SF_CHANNEL_MAP_TOP_REAR_RIGHT};
    std::vector<int> found;
    for (; mask != 0; mask &= mask - 1) {
        found.push_back(positions.at(static_cast<std::size_t>(std::countr_zero(mask))));
    }
    return found;
}

Sound makeNoiseFor(std::uint32_t mask, std::size_t frames) {
    Sound sound = makeNoise(std::popcount(mask), frames);
    sound.format = SF_FORMAT_WAVEX | SF_FORMAT_FLOAT;
    sound.positions = positionsOfMask(mask);
    return sound;
}

void writeSound(const std::string& path, const Sound& sound) {
    SF_INFO info{};
    info.channels = sound.channels;
    info.samplerate = sound.sampleRate;
    info.format = sound.format;
    SNDFILE* const file = openSound(path, SFM_WRITE, info);
    std::vector<int> positions = sound.positions;
    const auto mapBytes = static_cast<int>(positions.size() * sizeof(int));
    const bool mapped =
        positions.empty() || sf_command(file, SFC_SET_CHANNEL_MAP_INFO, positions.data(), mapBytes) == 1;
    const auto frames = static_cast<sf_count_t>(sound.frames());
    const bool written = sf_writef_float(file, sound.samples.data(), frames) == frames;
    if (sf_close(file) != 0 || !mapped || !written) {
        throw std::runtime_error(path + ": not written as asked");
    }
}

Sound readSound(const std::string& path) {
    SF_INFO info{};
    SNDFILE* const file = openSound(path, SFM_READ, info);
    Sound sound{.channels = info.channels, .sampleRate = info.samplerate, .format = info.format};
    std::vector<int> positions(static_cast<std::size_t>(info.channels));
    if (sf_command(file, SFC_GET_CHANNEL_MAP_INFO, positions.data(),
                   static_cast<int>(positions.size() * sizeof(int))) == 1) {
        sound.positions = positions;
    }
    sound.samples.resize(static_cast<std::size_t>(info.frames * info.channels));
    const sf_count_t count = sf_readf_float(file, sound.samples.data(), info.frames);
    sf_close(file);
    if (count != info.frames) {
        throw std::runtime_error(path + ": shorter than it says");
    }
    return sound;
}

void writeLongSound(const std::string& path, std::uint32_t frames) {
    std::string header = "RIFF";
    appendNumber(header, frames + 36, 4);
    header += "WAVEfmt ";
    appendNumber(header, 16, 4);
    appendNumber(header, 1, 2);      // integers
    appendNumber(header, 1, 2);      // channels
    appendNumber(header, 48000, 4);  // frames a second
    appendNumber(header, 48000, 4);  // bytes a second
    appendNumber(header, 1, 2);      // bytes a frame
    appendNumber(header, 8, 2);      // bits a sample
    header += "data";
    appendNumber(header, frames, 4);
    writeBytes(path, header);
    std::filesystem::resize_file(path, header.size() + frames);
}

}  // namespace korva::test
