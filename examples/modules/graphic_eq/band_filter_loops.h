// The loop itself, for a vector of any number of lanes. Included by the sources that say which, each of which
// is compiled for another processor: nothing of it is known outside of them.
#pragma once

#include "band_filter.h"

namespace equaliser {
namespace {

/// 120 dB over full scale. What is louder is no sound; what is not can't overflow the filters.
constexpr float loudest = 1048576.0f;

template <class Lanes>
void silenceWhatIsNoSample(std::size_t lane, Frame* frames, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
        float* const samples = frames[i].planes + lane;
        Lanes::load(samples).orZeroAbove(loudest).store(samples);
    }
}

template <class Lanes>
void multiply(float gain, std::size_t lane, Frame* frames, std::size_t count) {
    const Lanes factor = Lanes::all(gain);
    for (std::size_t i = 0; i < count; ++i) {
        float* const samples = frames[i].planes + lane;
        (Lanes::load(samples) * factor).store(samples);
    }
}

/// Some bands in one pass over the frames. A band waits for its own last sample longer than it computes:
/// several of them fill that time, as many as find room in the registers.
template <class Lanes, std::size_t bandsAtOnce>
void filterSome(const RunningBand* bands, std::size_t lane, Frame* frames, std::size_t count) {
    Lanes first[bandsAtOnce];
    Lanes second[bandsAtOnce];
    for (std::size_t band = 0; band < bandsAtOnce; ++band) {
        first[band] = Lanes::load(bands[band].state->first.planes + lane);
        second[band] = Lanes::load(bands[band].state->second.planes + lane);
    }
    for (std::size_t i = 0; i < count; ++i) {
        Lanes sound = Lanes::load(frames[i].planes + lane);
        for (std::size_t band = 0; band < bandsAtOnce; ++band) {
            const Coefficients& c = bands[band].coefficients;
            // Twice the band-pass output, by the trapezoidal rule.
            const Lanes pass =
                (sound - second[band]).timesPlus(Lanes::all(c.ofInput), first[band] * Lanes::all(c.ofState));
            first[band] = pass - first[band];
            second[band] = pass.timesPlus(Lanes::all(c.tuning), second[band]);
            sound = pass.timesPlus(Lanes::all(c.halfShare), sound);
        }
        sound.store(frames[i].planes + lane);
    }
    for (std::size_t band = 0; band < bandsAtOnce; ++band) {
        first[band].store(bands[band].state->first.planes + lane);
        second[band].store(bands[band].state->second.planes + lane);
    }
}

template <class Lanes>
void filterAll(const RunningBand* bands, std::size_t bandsRunning, std::size_t lane, Frame* frames,
               std::size_t count) {
    for (; bandsRunning >= 4; bandsRunning -= 4, bands += 4) {
        filterSome<Lanes, 4>(bands, lane, frames, count);
    }
    if (bandsRunning == 3) {
        filterSome<Lanes, 3>(bands, lane, frames, count);
    } else if (bandsRunning == 2) {
        filterSome<Lanes, 2>(bands, lane, frames, count);
    } else if (bandsRunning == 1) {
        filterSome<Lanes, 1>(bands, lane, frames, count);
    }
}

/// A `BandFilter`.
template <class Lanes>
void filterBands(const RunningBand* bands, std::size_t bandsRunning, float outputGain, Frame* frames,
                 std::size_t count) {
    for (std::size_t lane = 0; lane < KORVA_PLANES; lane += Lanes::count) {
        silenceWhatIsNoSample<Lanes>(lane, frames, count);
        filterAll<Lanes>(bands, bandsRunning, lane, frames, count);
        multiply<Lanes>(outputGain, lane, frames, count);
    }
}

}  // namespace
}  // namespace equaliser
