#include "rt/engine_gate.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <memory>
#include <thread>
#include <utility>
#include <vector>

#include "rt/rt_processor.h"
#include "tests/support/block_processors.h"
#include "tests/support/stream.h"

namespace korva::rt {
namespace {

using test::connectionTo;
using test::formatOf;

/// Ends a loop that waits for another thread, in case it waits for what never comes.
class Deadline {
public:
    explicit Deadline(std::chrono::milliseconds time = std::chrono::seconds(20))
        : end(std::chrono::steady_clock::now() + time) {}

    [[nodiscard]] bool passed() const { return std::chrono::steady_clock::now() > end; }

private:
    std::chrono::steady_clock::time_point end;
};

TEST(EngineGate, IsOpenAtFirst) {
    EngineGate gate;

    EXPECT_TRUE(gate.enter());
    gate.leave();
}

TEST(EngineGate, IsShutFromRaiseToLower) {
    EngineGate gate;

    gate.raise();
    EXPECT_FALSE(gate.enter());
    gate.leave();

    gate.lower();
    EXPECT_TRUE(gate.enter());
    gate.leave();
}

TEST(EngineGate, StaysShutUntilTheLastOfNestedRaisesIsLowered) {
    EngineGate gate;
    gate.raise();
    gate.raise();
    gate.raise();

    for (int lowered = 0; lowered < 3; ++lowered) {
        EXPECT_FALSE(gate.enter()) << lowered << " lowered";
        gate.leave();
        gate.lower();
    }

    EXPECT_TRUE(gate.enter());
    gate.leave();
}

TEST(EngineGate, LetsARaiseThroughOnlyWhenTheCallInsideHasLeft) {
    EngineGate gate;
    std::atomic<bool> left{false};
    std::atomic<bool> raised{false};
    bool leftBeforeRaised = false;
    ASSERT_TRUE(gate.enter());

    std::thread owner([&] {
        gate.raise();
        leftBeforeRaised = left;
        raised = true;
        gate.lower();
    });
    // Entering again from inside shows when the owner holds the gate: from there on it must wait.
    const Deadline deadline;
    bool open = true;
    while (open && !deadline.passed()) {
        open = gate.enter();
        gate.leave();
    }
    EXPECT_FALSE(open);
    // Time enough for a raise that doesn't wait.
    const Deadline shortDeadline(std::chrono::milliseconds(20));
    while (!raised && !shortDeadline.passed()) {
        std::this_thread::yield();
    }
    left = true;
    gate.leave();
    owner.join();

    EXPECT_TRUE(leftBeforeRaised);
}

/// A processor that plays stereo, for tests that call it from a thread of their own.
class Playing {
public:
    static constexpr float input = 0.5f;

    Playing() { test::lockStream(processor, formatOf(2), formatOf(2)); }

    /// One call; gives the sample that the whole output consists of, or 0 if it isn't one.
    float play() {
        std::fill(target.begin(), target.end(), -1.0f);
        auto in = connectionTo(source, frames);
        auto out = connectionTo(target, 0);
        test::process(processor, in, out, 2);
        const bool even = std::all_of(target.begin(), target.end(), [&](float s) { return s == target[0]; });
        return even ? target[0] : 0.0f;
    }

    RtProcessor processor;

private:
    static constexpr std::uint32_t frames = 24;
    std::vector<float> source = std::vector<float>(std::size_t{2} * frames, input);
    std::vector<float> target = std::vector<float>(std::size_t{2} * frames);
};

TEST(EngineExchange, FoldsTheSoundWhileTheOwnerHoldsTheGateThoughAnEngineIsSet) {
    Playing stream;
    std::atomic<bool> inside{false};
    std::atomic<bool> exchanged{false};
    float whileHeld = 0.0f;
    bool exchangedTooSoon = true;
    int depth = 0;
    // The engine keeps the audio thread inside its call. It calls the processor again from there: as soon
    // as the owner asks for the gate, such a call is carried by the fold and not by the engine.
    test::CallingProcessor engine([&](DspBlock& block) {
        ++depth;
        if (depth == 1) {
            inside = true;
            const Deadline deadline;
            do {
                whileHeld = stream.play();
            } while (whileHeld == -Playing::input && !deadline.passed());
            exchangedTooSoon = exchanged;
        }
        for (std::size_t k = 0; k < block.frames; ++k) {
            block.channels[FrontLeft][k] = block.channels[FrontRight][k] = -Playing::input;
        }
        --depth;
    });
    stream.processor.exchangeEngine(&engine);

    float fromEngine = 0.0f;
    std::thread audio([&] { fromEngine = stream.play(); });
    while (!inside) {
        std::this_thread::yield();
    }
    BlockProcessor* const previous = stream.processor.exchangeEngine(nullptr);
    exchanged = true;
    audio.join();

    EXPECT_EQ(previous, &engine);
    EXPECT_EQ(whileHeld, Playing::input);
    EXPECT_FALSE(exchangedTooSoon);
    EXPECT_EQ(stream.play(), Playing::input);
}

/// An engine on the heap that knows whether it has been released. Its plain fields are written before it is
/// handed over and by each call, so that a missing order between the two threads shows as a race.
class MortalEngine final : public BlockProcessor {
public:
    static constexpr float factor = 1.5f;

    explicit MortalEngine(std::atomic<int>& faultCounter) : faults(&faultCounter) {}
    ~MortalEngine() {
        life = dead;
        calls = 0xDEADDEAD;
    }
    MortalEngine(const MortalEngine&) = delete;
    MortalEngine& operator=(const MortalEngine&) = delete;

    void Process(DspBlock* block) noexcept override {
        expectAlive();
        ++calls;
        for (std::size_t plane = 0; plane < 2; ++plane) {
            for (std::size_t k = 0; k < block->frames; ++k) {
                block->channels[plane][k] *= factor;
            }
        }
        expectAlive();
    }

    [[nodiscard]] std::uint32_t callCount() const { return calls; }

private:
    static constexpr std::uint32_t alive = 0xA11FEA11;
    static constexpr std::uint32_t dead = 0xDEADDEAD;

    void expectAlive() noexcept {
        if (life != alive) {
            faults->fetch_add(1);
        }
    }

    // Volatile, so that the destructor's write stays.
    volatile std::uint32_t life = alive;
    std::uint32_t calls = 0;
    std::atomic<int>* faults;
};

TEST(EngineExchange, NeverRunsAReleasedEngineAndNeverFallsSilentOverTwoHundredThousandSwaps) {
    constexpr int swaps = 200'000;
    Playing stream;
    std::atomic<int> faults{0};
    std::atomic<bool> stop{false};
    std::atomic<std::uint64_t> played{0};
    std::uint64_t folded = 0;
    std::uint64_t engineCalls = 0;
    std::uint64_t wrong = 0;

    std::thread audio([&] {
        while (!stop) {
            const float sample = stream.play();
            if (sample == Playing::input) {
                ++folded;
            } else if (sample == Playing::input * MortalEngine::factor) {
                ++engineCalls;
            } else {
                ++wrong;
            }
            played.fetch_add(1, std::memory_order_relaxed);
        }
    });
    const auto awaitCalls = [&](std::uint64_t count) {
        while (played < count) {
            std::this_thread::yield();
        }
    };
    awaitCalls(1);
    std::unique_ptr<MortalEngine> current;
    std::uint64_t callsOfReleased = 0;
    const auto exchange = [&](std::unique_ptr<MortalEngine> next) {
        EXPECT_EQ(stream.processor.exchangeEngine(next.get()), current.get());
        callsOfReleased += current != nullptr ? current->callCount() : 0;
        current = std::move(next);
    };
    for (int swap = 0; swap < swaps; ++swap) {
        exchange(swap % 5 == 4 ? nullptr : std::make_unique<MortalEngine>(faults));
        if (swap % 1000 == 0) {
            awaitCalls(played + 2);  // at least one of them began with this engine set
        }
    }
    exchange(nullptr);
    stop = true;
    audio.join();

    EXPECT_EQ(faults, 0);
    EXPECT_EQ(wrong, 0u);
    EXPECT_EQ(folded + engineCalls, played);
    EXPECT_EQ(callsOfReleased, engineCalls);
    EXPECT_GE(engineCalls, static_cast<std::uint64_t>(swaps / 1000));
}

}  // namespace
}  // namespace korva::rt
