// A DSP module without a host: what playing through it has to give.
#pragma once

#include <array>
#include <map>
#include <span>
#include <string>
#include <vector>

#include "korva/dsp_module.h"
#include "korva/preset/preset.h"
#include "rt/engine_format.h"
#include "tests/support/loaded_library.h"

namespace korva::test {

/// An instance of a module, set by a preset and called by the public interface only.
class ModuleAlone {
public:
    /// The module at `path`, which begins as for the first buffer of a stream that has `format` on both
    /// sides.
    ModuleAlone(const std::string& path, const tool::Preset& preset, const rt::EngineFormat& format);
    ~ModuleAlone();
    ModuleAlone(const ModuleAlone&) = delete;
    ModuleAlone& operator=(const ModuleAlone&) = delete;

    /// Sends the parameters whose bytes are others than they were.
    void change(const tool::Preset& preset);

    /// One buffer of interleaved samples, in blocks of at most 512 frames.
    [[nodiscard]] std::vector<float> play(std::span<const float> samples);

    /// A sound in buffers of `bufferFrames`.
    [[nodiscard]] std::vector<float> playInBuffers(std::span<const float> samples, std::size_t bufferFrames);

private:
    struct alignas(64) Plane {
        std::array<float, KORVA_BLOCK_FRAMES> samples;
    };

    void send(const tool::ParameterPlace& place, const std::vector<std::byte>& bytes);
    void playBlock(const float* input, float* output, std::size_t frames);

    const LoadedLibrary library;
    DspInstance* instance;
    const rt::EngineFormat format;
    std::map<tool::ParameterPlace, std::vector<std::byte>> sent;
    std::array<Plane, KORVA_PLANES> planes{};
};

}  // namespace korva::test
