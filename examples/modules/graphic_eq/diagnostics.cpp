#include "diagnostics.h"

#include <immintrin.h>

#include <chrono>
#include <cstring>

namespace equaliser {
namespace {

constexpr std::uint32_t version = 1;

std::uint32_t clockMs() {
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    return static_cast<std::uint32_t>(std::chrono::duration_cast<std::chrono::milliseconds>(now).count());
}

template <class Value>
std::uint32_t give(std::span<std::byte> out, const Value& value) {
    if (out.size() < sizeof value) {
        return 0;
    }
    std::memcpy(out.data(), &value, sizeof value);
    return sizeof value;
}

}  // namespace

std::uint64_t Diagnostics::blockBegins(const DspBlock& block) {
    if (areMetersEnabled.load(std::memory_order_relaxed)) {
        inputMeters.note(block);
    }
    return __rdtsc();
}

void Diagnostics::blockEnds(const DspBlock& block, std::uint64_t begin) {
    cycleCount.store(static_cast<std::uint32_t>(__rdtsc() - begin), std::memory_order_relaxed);
    frameCount.store(frameCount.load(std::memory_order_relaxed) + block.frames, std::memory_order_relaxed);
    if (areMetersEnabled.load(std::memory_order_relaxed)) {
        outputMeters.note(block);
    }
}

void Diagnostics::parameterCame(std::uint32_t bytes) {
    received.clockEnd = clockMs();
    if (received.bytes == 0) {
        received.clockStart = received.clockEnd;
    }
    received.bytes += bytes;
}

std::uint32_t Diagnostics::exchange(std::int32_t id, std::span<const std::byte> in,
                                    std::span<std::byte> out) {
    switch (id) {
        case KORVA_DATA_MODULE_VERSION:
            return give(out, version);
        case KORVA_DATA_CYCLE_COUNT:
            return give(out, cycleCount.load(std::memory_order_relaxed));
        case KORVA_DATA_FRAME_COUNT:
            return give(out, frameCount.load(std::memory_order_relaxed));
        case KORVA_DATA_INPUT_METERS:
            return out.size() < sizeof(PlaneLevels) ? 0 : give(out, levelsOf(inputMeters));
        case KORVA_DATA_OUTPUT_METERS:
            return out.size() < sizeof(PlaneLevels) ? 0 : give(out, levelsOf(outputMeters));
        case KORVA_DATA_METERS_ENABLED:
            enableMeters(in);
            return 0;
        case KORVA_DATA_PARAMETER_BYTES:
            restartCount(in);
            return give(out, received.bytes);
        case KORVA_DATA_BYTES_RECEIVED:
            return give(out, received);
        default:
            return 0;
    }
}

void Diagnostics::enableMeters(std::span<const std::byte> in) {
    if (in.size() != 1) {
        return;
    }
    const bool enable = in[0] != std::byte{0};
    if (enable && !areMetersEnabled.load(std::memory_order_relaxed)) {
        // A block that ran while they were switched off may have left something.
        inputMeters.take();
        outputMeters.take();
    }
    areMetersEnabled.store(enable, std::memory_order_relaxed);
}

void Diagnostics::restartCount(std::span<const std::byte> in) {
    std::uint32_t value = 0;
    if (in.size() != sizeof value) {
        return;
    }
    std::memcpy(&value, in.data(), sizeof value);
    if (value == 0) {
        received = {};
    }
}

PlaneLevels Diagnostics::levelsOf(PeakMeters& meters) {
    return areMetersEnabled.load(std::memory_order_relaxed) ? meters.take() : PlaneLevels{};
}

}  // namespace equaliser
