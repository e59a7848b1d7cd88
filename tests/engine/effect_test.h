// A test of an effect core by what its module is told.
#pragma once

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "framework/observable.h"
#include "framework/shared_bytes.h"
#include "params/parameter.h"
#include "params/parameter_set.h"
#include "tests/engine/expected_calls.h"
#include "tests/support/call_text.h"
#include "tests/support/effect_rig.h"

namespace korva::test {

/// An effect with the third engine, unless another one is chosen.
class EffectTest : public testing::Test {
protected:
    using Layer = framework::Observable<framework::SharedBytes> params::Parameter::*;

    void begin(const EngineChoice& choice = {.engineId = thirdEngine}) {
        rig.install(choice);
        rig.begin();
    }
    /// The same, with a stream; `newCalls` gives what comes later.
    void beginStream(const EngineChoice& choice = {.engineId = thirdEngine}) {
        begin(choice);
        rig.lock();
        static_cast<void>(newCalls());
    }
    /// Frames of the stream, and what comes of them on as many channels.
    std::vector<float> play(const std::vector<float>& samples, std::uint32_t channels = 2) {
        return rig.play(samples, channels);
    }
    [[nodiscard]] Lines newCalls() { return textsOf(rig.newRecords()); }

    /// On the core's thread; there has to be one of that number.
    [[nodiscard]] params::Parameter& parameter(int bank, int id) {
        return *rig.core().parameterSet.value()->find(static_cast<std::uint32_t>(bank), id);
    }
    void setLayer(int bank, int id, Layer layer, std::span<const std::byte> bytes) {
        rig.on([&] { (parameter(bank, id).*layer).set(framework::SharedBytes(bytes)); });
    }
    [[nodiscard]] framework::SharedBytes effective(int bank, int id) {
        framework::SharedBytes bytes;
        rig.on([&] { bytes = parameter(bank, id).effective.value(); });
        return bytes;
    }

    EffectRig rig;
};

}  // namespace korva::test
