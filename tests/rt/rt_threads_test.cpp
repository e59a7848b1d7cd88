// What the owner may do while the audio thread is in its calls: change settings, read measures, drain taps.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdint>
#include <thread>
#include <vector>

#include "rt/rt_processor.h"
#include "tests/support/block_processors.h"
#include "tests/support/random_samples.h"
#include "tests/support/stream.h"

namespace korva::rt {
namespace {

using published::APO_CONNECTION_PROPERTY;
using test::connectionTo;
using test::formatOf;

/// Calls a processor without pause from a thread of its own, with full-scale samples, and counts the calls
/// that left the connections or the memory around the buffer otherwise than they should.
class AudioThread {
public:
    explicit AudioThread(RtProcessor& rtProcessor) : processor(rtProcessor), thread([this] { run(); }) {}
    AudioThread(const AudioThread&) = delete;
    AudioThread& operator=(const AudioThread&) = delete;
    ~AudioThread() { join(); }

    void join() {
        stop = true;
        if (thread.joinable()) {
            thread.join();
        }
    }

    /// Returns when the thread has made a whole call after this one was asked for.
    void letItPlay() const {
        const std::uint64_t before = calls;
        while (calls < before + 2) {
            std::this_thread::yield();
        }
    }

    static constexpr std::array<std::uint32_t, 3> frameCounts = {16, 33, 520};
    std::atomic<std::uint64_t> calls{0};
    std::uint64_t faults = 0;

private:
    static constexpr float guard = 77.0f;

    void run() {
        const std::vector<float> source(std::size_t{520} * 8, -1.0f);
        std::vector<float> target(std::size_t{520} * 8 + 1, guard);
        while (!stop) {
            const std::uint32_t frames = frameCounts[calls % frameCounts.size()];
            APO_CONNECTION_PROPERTY input = connectionTo(source, frames);
            APO_CONNECTION_PROPERTY output = connectionTo(target, 0);
            test::process(processor, input, output, 8);
            const bool asItShould = output.u32BufferFlags == published::BUFFER_VALID &&
                                    output.u32ValidFrameCount == frames && target.back() == guard;
            if (!asItShould) {
                ++faults;
            }
            calls.fetch_add(1);
        }
    }

    RtProcessor& processor;
    std::atomic<bool> stop{false};
    std::thread thread;  // last: it uses all the others
};

TEST(RtProcessorThreads, SettingsMayChangeWhileAStreamRuns) {
    RtProcessor processor;
    test::lockStream(processor, formatOf(2), formatOf(2));
    AudioThread audio(processor);
    test::RandomSamples random;

    for (int change = 0; change < 10'000; ++change) {
        const auto in = static_cast<std::int32_t>(random.below(9));
        const auto out = static_cast<std::int32_t>(random.below(9));
        processor.passThrough.set(random.below(8) == 0);
        processor.levelMetersEnabled.set(random.below(2));
        processor.hardwareMode.set(random.coin());
        processor.inFormat.set(formatOf(in));
        processor.inputChannelCount.set(in);
        processor.outFormat.set(formatOf(out));
        processor.outputChannelCount.set(out);
        processor.outputChannelMask.set(formatOf(out).channelMask);
        processor.meterReleaseFloor.set(0.00001f);
        processor.meterReleaseGrowth.set(random.coin() ? 1.0003f : 0.50015f);
        if (change % 50 == 0) {
            audio.letItPlay();
        }
    }
    audio.join();

    EXPECT_EQ(audio.faults, 0u);
    EXPECT_GE(audio.calls, 200u);
}

TEST(RtProcessorThreads, MeasuresMayBeReadWhileAStreamRuns) {
    RtProcessor processor;
    test::lockStream(processor, formatOf(2), formatOf(2));
    processor.levelMetersEnabled.set(1);
    AudioThread audio(processor);
    audio.letItPlay();

    for (int read = 0; read < 20'000; ++read) {
        const auto frames = processor.lastFrames.get();
        const auto& known = AudioThread::frameCounts;
        ASSERT_NE(std::find(known.begin(), known.end(), frames), known.end()) << frames;
        ASSERT_EQ(processor.inputPeak[FrontLeft].get(), 1.0f);
        ASSERT_EQ(processor.outputPeak[FrontRight].get(), 1.0f);
        ASSERT_EQ(processor.inputPeak[FrontCenter].get(), 0.0f);
        ASSERT_LT(processor.lastProcessNs.get(), 60'000'000'000u);
    }
    audio.join();

    EXPECT_EQ(audio.faults, 0u);
}

TEST(RtProcessorThreads, AStreamMayBeginAnewWhileItRuns) {
    RtProcessor processor;
    test::lockStream(processor, formatOf(2), formatOf(2));
    AudioThread audio(processor);

    for (int lock = 0; lock < 200; ++lock) {
        audio.letItPlay();
        EXPECT_TRUE(processor.started.get());
        processor.started.set(false);
    }
    audio.join();

    EXPECT_EQ(audio.faults, 0u);
}

TEST(WriteTap, GivesAReaderOnAnotherThreadTheSamplesBeforeTheirIndex) {
    constexpr std::size_t capacity = 1 << 18;
    constexpr std::size_t piece = 7;
    std::vector<float> ring(capacity);
    std::atomic<std::int32_t> index{0};
    const SampleTap tap{
        .samples = ring.data(), .writeIndex = &index, .capacity = static_cast<std::int32_t>(capacity)};

    std::thread audio([&] {
        std::array<float, piece> samples{};
        for (std::size_t from = 0; from + piece < capacity; from += piece) {
            for (std::size_t k = 0; k < piece; ++k) {
                samples[k] = static_cast<float>(from + k + 1);
            }
            writeTap(tap, samples.data(), piece);
        }
    });
    std::size_t read = 0;
    std::size_t wrong = 0;
    while (read + piece < capacity) {
        const auto ready = static_cast<std::size_t>(index.load(std::memory_order_acquire));
        for (; read < ready; ++read) {
            if (ring[read] != static_cast<float>(read + 1)) {
                ++wrong;
            }
        }
    }
    audio.join();

    EXPECT_EQ(wrong, 0u);
}

}  // namespace
}  // namespace korva::rt
