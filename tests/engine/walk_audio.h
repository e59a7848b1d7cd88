// Sound that runs all the time.
#pragma once

#include <array>
#include <atomic>
#include <cmath>
#include <cstdint>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "framework/waitable_counter.h"
#include "platform/mutex.h"
#include "platform/published/audio_records.h"
#include "rt/rt_processor.h"

namespace korva::test {

/// A thread that plays a constant through a core, one buffer after the other, and looks at each that comes
/// back. It stops for nothing but a lock, as audio engines do.
class WalkAudio {
public:
    static constexpr float level = 0.25f;

    /// The samples of one buffer.
    struct Heard {
        float lowest = 0.0f;
        float highest = 0.0f;
    };

    explicit WalkAudio(rt::RtProcessor& processor) : played(processor), thread([this] { run(); }) {}
    ~WalkAudio() {
        isEnding = true;
        wanted.add(1);
        thread.join();
    }
    WalkAudio(const WalkAudio&) = delete;
    WalkAudio& operator=(const WalkAudio&) = delete;

    /// Runs `change` between two buffers; from there on they have so many channels.
    template <class Change>
    void between(std::uint32_t inputs, std::uint32_t outputs, const Change& change) {
        const std::lock_guard guard(mutex);
        change();
        inputChannels = inputs;
        outputChannels = outputs;
    }

    /// Of a buffer that began after this call.
    [[nodiscard]] Heard next() {
        // The one that was under way may come first.
        for (int buffer = 0; buffer < 2; ++buffer) {
            std::uint32_t seen = done.get();
            wanted.add(1);
            done.wait(seen);
        }
        const std::lock_guard guard(mutex);
        return heard;
    }

    /// What was wrong with buffers; empty if nothing was.
    [[nodiscard]] std::string complaint() {
        const std::lock_guard guard(mutex);
        return wrong;
    }

    [[nodiscard]] std::uint32_t bufferCount() const { return done.get(); }

private:
    static constexpr std::uint32_t mostFrames = 600;
    static constexpr std::uint32_t mostChannels = 8;
    static constexpr float untouched = 1e30f;
    static constexpr std::int64_t pauseMs = 1;

    using Connection = published::APO_CONNECTION_PROPERTY;

    void run() {
        std::uint32_t seen = wanted.get();
        while (!isEnding) {
            {
                const std::lock_guard guard(mutex);
                play();
            }
            done.add(1);
            wanted.waitFor(seen, pauseMs);
        }
    }

    void play() {
        frames = frames % mostFrames + 37;
        frames = frames > mostFrames ? 1 : frames;
        output.assign(output.size(), untouched);
        Connection in{reinterpret_cast<UINT_PTR>(input.data()), frames, published::BUFFER_VALID,
                      published::connectionPropertySignature};
        Connection out{reinterpret_cast<UINT_PTR>(output.data()), 0, published::BUFFER_INVALID,
                       published::connectionPropertySignature};
        Connection* const ins[] = {&in};
        Connection* const outs[] = {&out};
        played.Process(1, ins, 1, outs, inputChannels);
        check(out);
    }

    void check(const Connection& out) {
        if (out.u32BufferFlags != published::BUFFER_VALID || out.u32ValidFrameCount != frames) {
            wrong = "a buffer's flag or count is wrong";
        }
        const std::size_t written = std::size_t{frames} * outputChannels;
        heard = {untouched, -untouched};
        for (std::size_t at = 0; at < output.size(); ++at) {
            if (at >= written) {
                wrong = output[at] == untouched ? wrong : "a sample behind a buffer's end was written";
            } else if (!(std::abs(output[at]) <= 4.0f)) {
                wrong = "sample " + std::to_string(at) + " is " + std::to_string(output[at]);
            } else {
                heard = {std::min(heard.lowest, output[at]), std::max(heard.highest, output[at])};
            }
        }
    }

    rt::RtProcessor& played;
    framework::WaitableCounter wanted;
    framework::WaitableCounter done;
    std::atomic<bool> isEnding{false};
    platform::Mutex mutex;  ///< Of all that follows; held while a buffer is played.
    std::uint32_t inputChannels = 0;
    std::uint32_t outputChannels = 0;
    std::uint32_t frames = 0;
    std::vector<float> input = std::vector<float>(std::size_t{mostFrames} * mostChannels, level);
    std::vector<float> output = std::vector<float>(std::size_t{mostFrames} * mostChannels);
    Heard heard;
    std::string wrong;
    std::thread thread;  // the last: it uses all the others
};

}  // namespace korva::test
