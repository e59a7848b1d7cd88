// Stand-ins for the host of a DSP module.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <utility>
#include <vector>

#include "rt/dsp_block.h"
#include "rt/speakers.h"

namespace korva::test {

/// Leaves the planes as they are, as a host without a module does.
class PassingProcessor final : public rt::BlockProcessor {
public:
    void Process(rt::DspBlock*) noexcept override {}
};

/// Keeps what each block looked like, then leaves the planes as they are.
class RecordingProcessor final : public rt::BlockProcessor {
public:
    struct Block {
        rt::DspBlock record;
        std::array<std::vector<float>, rt::planeCount> planes;  ///< `record.frames` samples each.
    };

    void Process(rt::DspBlock* block) noexcept override {
        Block& kept = blocks.emplace_back(Block{*block, {}});
        for (std::size_t plane = 0; plane < kept.planes.size(); ++plane) {
            kept.planes[plane].assign(block->channels[plane], block->channels[plane] + block->frames);
        }
    }

    std::vector<Block> blocks;
};

/// Multiplies all eight planes by a factor.
class ScalingProcessor final : public rt::BlockProcessor {
public:
    explicit ScalingProcessor(float scale) : factor(scale) {}

    void Process(rt::DspBlock* block) noexcept override {
        for (std::size_t plane = 0; plane < rt::planeCount; ++plane) {
            for (std::uint32_t k = 0; k < block->frames; ++k) {
                block->channels[plane][k] *= factor;
            }
        }
    }

private:
    float factor;
};

/// Does what the test says.
class CallingProcessor final : public rt::BlockProcessor {
public:
    explicit CallingProcessor(std::function<void(rt::DspBlock&)> function) : call(std::move(function)) {}

    void Process(rt::DspBlock* block) noexcept override { call(*block); }

private:
    std::function<void(rt::DspBlock&)> call;
};

}  // namespace korva::test
