// The equaliser as a host plays it: the module loaded by its path, and sound handed to it in blocks.
#pragma once

#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "korva/dsp_module.h"
#include "tests/support/loaded_library.h"

namespace korva::test {

inline constexpr std::size_t equaliserBands = 12;
using BandValues = std::array<float, equaliserBands>;
using Sound = std::array<std::vector<float>, KORVA_PLANES>;

/// Silence of that length.
[[nodiscard]] Sound silence(std::size_t frames);

/// Noise on all planes, the same in each run.
[[nodiscard]] Sound noise(std::size_t frames);

/// Whether two sounds are the same to the bit.
void expectSameBits(const Sound& actual, const Sound& expected);

/// Stereo, 5.1 and 7.1 at `sampleRate`.
[[nodiscard]] EngineFormat formatOf(std::int32_t channels, std::uint32_t sampleRate);

/// The module's files: the one that uses what the processor has, and the one that uses what all have.
[[nodiscard]] std::vector<std::string> equaliserFiles();

/// An instance. Unless a test says otherwise it is active, for 7.1 at 48 kHz; at a rate of 0 it isn't.
class PlayedEqualiser {
public:
    explicit PlayedEqualiser(const std::string& file = equaliserFiles().front(),
                             std::uint32_t sampleRate = 48000);
    ~PlayedEqualiser();
    PlayedEqualiser(const PlayedEqualiser&) = delete;
    PlayedEqualiser& operator=(const PlayedEqualiser&) = delete;

    bool initialize(EngineFormat in, EngineFormat out);
    void uninitialize();
    void clear();

    void set(std::int32_t bank, std::int32_t id, std::span<const std::byte> bytes);
    void setGains(const BandValues& db) { set(0, 3, std::as_bytes(std::span(db))); }
    void setAllGains(float db);
    void setCentres(const BandValues& hz) { set(0, 5, std::as_bytes(std::span(hz))); }
    void setOutputGain(float db) { set(0, 4, std::as_bytes(std::span(&db, 1))); }
    void setBypass(bool on) { setSwitch(0, 8, on); }
    void setEffectsDisabled(bool on) { setSwitch(KORVA_BANK_ENGINE, KORVA_PARAMETER_EFFECTS_DISABLED, on); }

    /// `SetGetData` of the engine's bank.
    std::uint32_t exchange(std::int32_t id, std::span<const std::byte> in, std::span<std::byte> out,
                           std::int32_t bank = KORVA_BANK_ENGINE);
    /// Reads a value; a failure if it isn't served with exactly its size.
    template <class Value>
    Value read(std::int32_t id) {
        Value value{};
        EXPECT_EQ(exchange(id, {}, std::as_writable_bytes(std::span(&value, 1))), sizeof value) << id;
        return value;
    }

    std::uint32_t testInput(EngineFormat& requested, EngineFormat opposite);
    std::uint32_t testOutput(EngineFormat& requested, EngineFormat opposite);

    /// Processes a sound in place, in blocks of those lengths in turn. What lies behind a block's frames is
    /// no number.
    void play(Sound& sound, const std::vector<std::uint32_t>& blockFrames = {KORVA_BLOCK_FRAMES});
    [[nodiscard]] Sound played(Sound sound,
                               const std::vector<std::uint32_t>& blockFrames = {KORVA_BLOCK_FRAMES}) {
        play(sound, blockFrames);
        return sound;
    }

    /// A block as it is, on the audio thread's side.
    void process(DspBlock& block) { instance->table->process(instance, &block); }

    [[nodiscard]] DspInstance* get() const { return instance; }

private:
    void setSwitch(std::int32_t bank, std::int32_t id, bool on);

    LoadedLibrary library;
    DspInstance* instance;
    bool isActive = false;
};

/// A test of each of the module's files.
class EveryEqualiser : public testing::TestWithParam<std::string> {};

}  // namespace korva::test
