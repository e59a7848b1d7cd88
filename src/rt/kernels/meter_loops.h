// Peak followers side by side, for any vector: its floats are lanes, one follower each.
#pragma once

#include "rt/kernels/quad.h"
#include "rt/level_meter.h"

namespace korva::rt {
namespace {

/// Fewer followers than this run one after the other, by the plain loop. It guesses by a branch whether the
/// level falls on, and where the sound makes that easy its chain is shorter than one without branches: only
/// several lanes at once are faster with every sound.
constexpr std::uint32_t leastLanesTogether = 3;

/// What a follower carries from sample to sample. Instead of level and slope it keeps what the next sample
/// needs of them, so that the two chains of dependent operations are as short as they can be.
template <class V>
struct Follower {
    V fallen;  ///< Level less slope.
    V slope;   ///< Slope after its growth, at least the floor.
};

template <class V>
struct FollowerConstants {
    V floor;
    V growth;
    V slopeAfterPeak;  ///< `Follower::slope` one sample after a peak.

    KORVA_INLINE FollowerConstants from(const MeterRelease& release) {
        const V floor = V::all(release.floor);
        const V growth = V::all(release.growth);
        return {floor, growth, V::max(V::mul(floor, growth), floor)};
    }
};

/// One sample of each lane. `max` gives its second operand for a NaN: a sample that is none counts as 0, and
/// so does a level (infinity less an infinite slope).
template <class V>
KORVA_INLINE void followSample(Follower<V>& f, V level, const FollowerConstants<V>& c) {
    const V held = V::max(f.fallen, V::zero());
    const V released = V::sub(held, f.slope);
    const V grown = V::max(V::mul(f.slope, c.growth), c.floor);
    f.fallen = V::whereLess(held, level, V::sub(level, c.floor), released);
    f.slope = V::whereLess(held, level, c.slopeAfterPeak, grown);
}

/// The last sample: gives level and slope as they are kept between calls.
template <class V>
KORVA_INLINE void followLast(const Follower<V>& f, V level, const FollowerConstants<V>& c, V& peak,
                             V& slope) {
    const V held = V::max(f.fallen, V::zero());
    peak = V::max(held, level);
    slope = V::whereLess(held, level, c.floor, f.slope);
}

template <class V>
KORVA_INLINE V levelOf(V samples) {
    return V::max(V::abs(samples), V::zero());
}

/// The lanes of one vector: their samples, and their state while they run.
template <class V>
struct Lanes {
    const float* rows[V::width];
    Follower<V> follower;

    KORVA_INLINE V gather(const float* const* lanes, std::uint32_t at) {
        float samples[V::width];
        for (std::uint32_t i = 0; i < V::width; ++i) {
            samples[i] = lanes[i][at];
        }
        return V::load(samples);
    }
};

/// Fills a vector's lanes; those without a follower repeat the first, and their result is dropped.
template <class V>
KORVA_INLINE void start(Lanes<V>& vector, const MeterLane* lanes, std::uint32_t count,
                        const FollowerConstants<V>& c) {
    float peak[V::width];
    float slope[V::width];
    for (std::uint32_t i = 0; i < V::width; ++i) {
        const MeterLane& lane = lanes[i < count ? i : 0];
        vector.rows[i] = lane.samples;
        peak[i] = *lane.peak;
        slope[i] = *lane.slope;
    }
    const V slopes = V::load(slope);
    vector.follower.fallen = V::sub(V::load(peak), slopes);
    vector.follower.slope = V::max(V::mul(slopes, c.growth), c.floor);
}

template <class V>
KORVA_INLINE void finish(const Lanes<V>& vector, std::uint32_t at, const MeterLane* lanes,
                         std::uint32_t count, const FollowerConstants<V>& c) {
    V peaks;
    V slopes;
    followLast(vector.follower, levelOf(Lanes<V>::gather(vector.rows, at)), c, peaks, slopes);
    float peak[V::width];
    float slope[V::width];
    V::store(peak, peaks);
    V::store(slope, slopes);
    for (std::uint32_t i = 0; i < V::width && i < count; ++i) {
        *lanes[i].peak = peak[i];
        *lanes[i].slope = slope[i];
    }
}

/// Four samples of each lane of a vector, one after the other.
template <class V>
KORVA_INLINE void levelsOfFour(const Lanes<V>& vector, std::uint32_t at, V levels[4]) {
    for (std::uint32_t r = 0; r < 4; ++r) {
        levels[r] = levelOf(V::loadRows(vector.rows + r, at));
    }
    V::transpose(levels[0], levels[1], levels[2], levels[3]);
}

/// Runs the lanes of `vectors` vectors together: each vector's chain leaves the processor idle most of the
/// time, and the others run in its gaps.
template <class V, std::uint32_t vectors>
KORVA_INLINE void followTogether(const MeterLane* lanes, std::uint32_t count, const MeterRelease& release,
                                 std::uint32_t frames) {
    const auto c = FollowerConstants<V>::from(release);
    Lanes<V> together[vectors];
    for (std::uint32_t v = 0; v < vectors; ++v) {
        start(together[v], lanes + v * V::width, count - v * V::width, c);
    }
    const std::uint32_t last = frames - 1;
    std::uint32_t k = 0;
    for (; k + 4 <= last; k += 4) {
        V levels[vectors][4];
        for (std::uint32_t v = 0; v < vectors; ++v) {
            levelsOfFour(together[v], k, levels[v]);
        }
        for (std::uint32_t r = 0; r < 4; ++r) {
            for (std::uint32_t v = 0; v < vectors; ++v) {
                followSample(together[v].follower, levels[v][r], c);
            }
        }
    }
    for (; k < last; ++k) {
        for (std::uint32_t v = 0; v < vectors; ++v) {
            followSample(together[v].follower, levelOf(Lanes<V>::gather(together[v].rows, k)), c);
        }
    }
    for (std::uint32_t v = 0; v < vectors; ++v) {
        finish(together[v], last, lanes + v * V::width, count - v * V::width, c);
    }
}

}  // namespace
}  // namespace korva::rt
