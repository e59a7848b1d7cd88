// An engine whose module notes each call and answers as it is told.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "engine/dsp_engine.h"
#include "framework/ref.h"
#include "rt/engine_format.h"
#include "tests/engine/hosted_engine.h"
#include "tests/support/own_folder.h"
#include "tests/support/recorded_calls.h"

namespace korva::test {

using Bytes = std::vector<std::uint8_t>;

/// An engine with the recording module for its module.
class RecordedEngine {
public:
    explicit RecordedEngine(const std::string& answers = {})
        : recording(answers),
          engine((folder.putLibrary(KORVA_RECORDER_MODULE, "module"),
                  hostedEngine({"module"}, folder.path()))) {}

    [[nodiscard]] engine::DspEngine* get() const noexcept { return engine.get(); }
    engine::DspEngine* operator->() const noexcept { return engine.get(); }

    [[nodiscard]] std::vector<RecordedCall> calls(const std::string& function) const {
        return callsOf(function, recording.calls());
    }

    /// The only call of that function.
    [[nodiscard]] RecordedCall onlyCall(const std::string& function) const {
        const auto seen = calls(function);
        EXPECT_EQ(seen.size(), 1U) << function;
        return seen.at(0);
    }

private:
    OwnFolder folder;

public:
    Recording recording;

private:
    framework::Held<engine::DspEngine> engine;
};

/// A format as modules see it, and as it is put into their answers.
[[nodiscard]] inline Bytes bytesOf(const rt::EngineFormat& format) {
    Bytes bytes(sizeof(format));
    std::memcpy(bytes.data(), &format, sizeof(format));
    return bytes;
}

[[nodiscard]] inline std::string digitsOf(const Bytes& bytes) {
    std::string digits;
    for (const std::uint8_t byte : bytes) {
        digits += "0123456789abcdef"[byte / 16];
        digits += "0123456789abcdef"[byte % 16];
    }
    return digits;
}

}  // namespace korva::test
