// The audio thread of an effect core.
#pragma once

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <thread>
#include <vector>

#include "platform/published/audio_records.h"
#include "rt/rt_processor.h"
#include "tests/support/wait_until.h"

namespace korva::test {

/// What became of buffers. A recorder halves them; a fold between equal layouts leaves them as they are.
struct PlayedBuffers {
    int processed = 0;
    int folded = 0;
    int wrong = 0;  ///< Anything else: silence, samples that nobody wrote, or some of each.
};

/// Plays stereo, one buffer after another, from its construction until `finish`, and looks at every sample
/// that comes out.
class SoundingThread {
public:
    explicit SoundingThread(rt::RtProcessor& section) : processor(section), thread([this] { play(); }) {}
    ~SoundingThread() { finish(); }
    SoundingThread(const SoundingThread&) = delete;
    SoundingThread& operator=(const SoundingThread&) = delete;

    /// So far.  [any]
    [[nodiscard]] int buffers() const noexcept { return playedBuffers.load(); }
    /// Waits until that many more have begun and ended.
    [[nodiscard]] bool playMore(int count) const {
        const int before = buffers();
        return waitUntil([&] { return buffers() > before + count; });
    }

    PlayedBuffers finish() {
        mayEnd.store(true);
        if (thread.joinable()) {
            thread.join();
        }
        return played;
    }

private:
    static constexpr std::uint32_t frames = 480;
    static constexpr std::uint32_t channels = 2;
    static constexpr float untouched = -7.0f;
    using Samples = std::vector<float>;

    void play() {
        for (unsigned round = 0; !mayEnd.load(); ++round) {
            playOne(1.0f + static_cast<float>(round % 64) / 64.0f);
            playedBuffers.fetch_add(1);
            std::this_thread::yield();
        }
    }

    void playOne(float sample) {
        std::fill(input.begin(), input.end(), sample);
        std::fill(output.begin(), output.end(), untouched);
        published::APO_CONNECTION_PROPERTY in = connectionTo(input, frames);
        published::APO_CONNECTION_PROPERTY out = connectionTo(output, 0);
        published::APO_CONNECTION_PROPERTY* const inputs[] = {&in};
        published::APO_CONNECTION_PROPERTY* const outputs[] = {&out};
        processor.Process(1, inputs, 1, outputs, channels);
        const bool isMarked =
            out.u32BufferFlags == published::BUFFER_VALID && out.u32ValidFrameCount == frames;
        if (isMarked && isAll(sample * 0.5f)) {
            ++played.processed;
        } else if (isMarked && isAll(sample)) {
            ++played.folded;
        } else {
            ++played.wrong;
        }
    }

    static published::APO_CONNECTION_PROPERTY connectionTo(Samples& samples, std::uint32_t count) {
        return {reinterpret_cast<UINT_PTR>(samples.data()), count, published::BUFFER_VALID,
                published::connectionPropertySignature};
    }
    [[nodiscard]] bool isAll(float sample) const {
        return std::all_of(output.begin(), output.end(), [&](float found) { return found == sample; });
    }

    rt::RtProcessor& processor;
    Samples input = Samples(std::size_t{frames} * channels);
    Samples output = Samples(std::size_t{frames} * channels);
    PlayedBuffers played;
    std::atomic<bool> mayEnd{false};
    std::atomic<int> playedBuffers{0};
    std::thread thread;
};

}  // namespace korva::test
