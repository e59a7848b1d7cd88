#include "tests/rtsafe/process_combinations.h"

#include <initializer_list>

#include "tests/support/stream.h"

namespace korva::test {
namespace {

/// Replaces each of `combinations` by a copy for each of `values`, with `field` set to it.
template <typename Value>
void vary(std::vector<Combination>& combinations, Value Combination::*field,
          std::initializer_list<Value> values) {
    std::vector<Combination> varied;
    for (const Value value : values) {
        for (Combination combination : combinations) {
            combination.*field = value;
            varied.push_back(combination);
        }
    }
    combinations = std::move(varied);
}

}  // namespace

std::vector<Combination> allCombinations() {
    using Ramp = Combination::Ramp;
    using Input = Combination::Input;
    std::vector<Combination> all(1);
    vary(all, &Combination::toStereo, {false, true});
    vary(all, &Combination::engine, {false, true});
    vary(all, &Combination::meters, {false, true});
    vary(all, &Combination::ramp, {Ramp::off, Ramp::plain, Ramp::crossfade});
    vary(all, &Combination::passThrough, {false, true});
    vary(all, &Combination::input, {Input::valid, Input::silent, Input::null});
    vary(all, &Combination::taps, {false, true});
    vary(all, &Combination::frames, {480u, 512u, 1000u});
    return all;
}

std::string nameOf(const Combination& combination) {
    constexpr std::array ramps = {"no ramp", "a ramp", "a crossfade"};
    constexpr std::array inputs = {"a valid input", "a silent input", "no input buffer"};
    std::string name = std::to_string(combination.frames) + " frames of ";
    name += combination.toStereo ? "7.1 to stereo, " : "stereo to 5.1, ";
    name += combination.engine ? "an engine, " : "no engine, ";
    name += combination.meters ? "meters, " : "no meters, ";
    name += ramps[static_cast<std::size_t>(combination.ramp)];
    name += combination.passThrough ? ", pass-through, " : ", ";
    name += inputs[static_cast<std::size_t>(combination.input)];
    return name + (combination.taps ? ", taps" : ", no taps");
}

CombinationPlayer::CombinationPlayer(const rt::Kernels& kernels) : processor(kernels) {}

void CombinationPlayer::prepare(const Combination& combination) noexcept {
    lockStream(processor, formatOf(combination.toStereo ? 8 : 2), formatOf(combination.toStereo ? 2 : 6));
    // The tap multiplies by the mask as a number, and 5.1's would lead it far out of the buffer.
    processor.outputChannelMask.set(3);
    processor.exchangeEngine(combination.engine ? &engine : nullptr);
    processor.levelMetersEnabled.set(combination.meters ? 1 : 0);
    processor.passThrough.set(combination.passThrough);
    processor.gainRamp = rt::GainRampState();
    processor.gainRamp.crossfade = combination.ramp == Combination::Ramp::crossfade ? 1 : 0;
    processor.gainRamp.step = combination.ramp == Combination::Ramp::off ? 1.0f : processor.gainRamp.stepDown;
    processor.inputTap = {};
    processor.outputTap = {};
    if (combination.taps) {
        processor.inputTap = {inputRing.data(), &inputIndex, static_cast<std::int32_t>(inputRing.size())};
        processor.outputTap = {outputRing.data(), &outputIndex, static_cast<std::int32_t>(outputRing.size())};
    }
    const bool silent = combination.input == Combination::Input::silent;
    input =
        connectionTo(source, combination.frames, silent ? published::BUFFER_SILENT : published::BUFFER_VALID);
    if (combination.input == Combination::Input::null) {
        input.pBuffer = 0;
    }
    output = connectionTo(target, combination.frames);
}

void CombinationPlayer::play() noexcept {
    process(processor, input, output, 2);
}

void CombinationPlayer::playDirectCopy() noexcept {
    copyDirectly(input, output, 2);
}

}  // namespace korva::test
