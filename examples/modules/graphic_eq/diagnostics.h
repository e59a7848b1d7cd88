// What diagnostic tools are shown.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <span>

#include "korva/dsp_module.h"
#include "peak_meters.h"

namespace equaliser {

class Diagnostics {
public:
    /// Around each block: `blockBegins` before the sound is touched, and with what it gave `blockEnds` after.
    /// [audio, rt]
    std::uint64_t blockBegins(const DspBlock& block);
    void blockEnds(const DspBlock& block, std::uint64_t begin);

    /// That so many bytes of parameters came.  [owner]
    void parameterCame(std::uint32_t bytes);

    /// `ZRDSPAPI_SetGetData` of the engine's bank: takes `in`, and gives how many bytes it wrote to `out`.
    /// None if `out` has no room for all.  [owner]
    std::uint32_t exchange(std::int32_t id, std::span<const std::byte> in, std::span<std::byte> out);

private:
    void enableMeters(std::span<const std::byte> in);
    void restartCount(std::span<const std::byte> in);
    PlaneLevels levelsOf(PeakMeters& meters);

    PeakMeters inputMeters;
    PeakMeters outputMeters;
    std::atomic<bool> areMetersEnabled{false};  ///< Owner writes, audio reads.
    std::atomic<std::uint32_t> frameCount{0};   ///< Audio writes, owner reads.
    std::atomic<std::uint32_t> cycleCount{0};   ///< Audio writes, owner reads: those of the last block.
    DspByteCount received{};                    ///< Owner.
};

}  // namespace equaliser
