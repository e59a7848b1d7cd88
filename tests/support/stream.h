// A processor and its two connections, set up as for a running stream.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <span>
#include <vector>

#include "platform/published/audio_records.h"
#include "rt/direct_copy.h"
#include "rt/rt_processor.h"

namespace korva::test {

/// A format as negotiation gives it, at 48 kHz.
[[nodiscard]] rt::EngineFormat formatOf(std::int32_t channels, std::uint32_t mask = 0);

/// Gives the processor the formats, counts, mask and meter release of a stream.
void lockStream(rt::RtProcessor& processor, const rt::EngineFormat& in, const rt::EngineFormat& out);

/// A connection to `samples`; null where the span is empty.
[[nodiscard]] published::APO_CONNECTION_PROPERTY connectionTo(
    std::span<const float> samples, std::uint32_t frames,
    published::APO_BUFFER_FLAGS flags = published::BUFFER_VALID);

/// One call of a processor or of the direct copy, with one connection on each side.
void process(rt::RtProcessor& processor, published::APO_CONNECTION_PROPERTY& input,
             published::APO_CONNECTION_PROPERTY& output, std::uint32_t samplesPerFrame = 0);
void copyDirectly(published::APO_CONNECTION_PROPERTY& input, published::APO_CONNECTION_PROPERTY& output,
                  std::uint32_t samplesPerFrame);

/// A processor in a stream, called with whole buffers. Outputs begin as `untouched`, so that a sample that
/// nobody wrote shows.
class Stream {
public:
    static constexpr float untouched = 77.0f;

    Stream(const rt::EngineFormat& in, const rt::EngineFormat& out,
           const rt::Kernels& kernels = rt::chosenKernels());

    /// One call with a valid input of whole frames; gives the output.
    std::vector<float> play(std::span<const float> samples);

    /// One call with a silent input of that many frames.
    std::vector<float> playSilence(std::uint32_t frames);

    rt::RtProcessor processor;
    published::APO_CONNECTION_PROPERTY input{};   ///< As the last call left it.
    published::APO_CONNECTION_PROPERTY output{};  ///< As the last call left it.

private:
    std::vector<float> call(std::uint32_t frames);

    std::uint32_t inChannels;
    std::uint32_t outChannels;
};

/// Runs `body` with each version of the loops, and names it in messages.
template <typename Body>
void withEveryVersion(Body body) {
    for (const rt::Kernels* version : rt::supportedKernels()) {
        SCOPED_TRACE(version->name);
        body(*version);
    }
}

}  // namespace korva::test
