// What tests of `korva process` with a module start from: sound, presets, endpoints and folders of modules.
#pragma once

#include <nlohmann/json.hpp>

#include <string>
#include <string_view>
#include <vector>

#include "korva/preset/preset.h"
#include "tests/cli/module_alone.h"
#include "tests/cli/preset_tool_test.h"
#include "tests/cli/process_support.h"

namespace korva::test {

class ModuleToolTest : public PresetToolTest {
protected:
    using Json = nlohmann::json;

    ModuleToolTest();

    /// The examples' two presets of the equaliser, in a folder beside the test's files.
    const std::string equaliserPreset = KORVA_SOURCE "/examples/presets/graphic_eq.json";
    const std::string voicePreset = KORVA_SOURCE "/examples/presets/graphic_eq_voice.json";

    /// in.wav, and how it is played to result/out.wav: through the equaliser and as a mode effect, unless the
    /// options say otherwise.
    [[nodiscard]] Launch playLaunch(const std::vector<std::string>& options) const;
    [[nodiscard]] Outcome play(const std::vector<std::string>& options) const {
        return run(playLaunch(options));
    }
    /// The samples that this gives; a test failure if it doesn't go well.
    [[nodiscard]] std::vector<float> played(const std::vector<std::string>& options) const;
    /// The report.
    [[nodiscard]] Json report(std::vector<std::string> options) const;

    /// Whether it fails with one line that has these parts, and leaves neither a file nor an endpoint.
    [[nodiscard]] testing::AssertionResult isRefused(const std::vector<std::string>& options,
                                                     const std::vector<std::string>& parts) const;

    [[nodiscard]] Outcome endpoint(std::vector<std::string> arguments) const;
    /// The identifier of a new one.
    [[nodiscard]] std::string addEndpoint(const std::vector<std::string>& options = {}) const;
    [[nodiscard]] std::size_t endpointCount() const;
    void installAt(const std::string& id, const std::string& file, const std::string& effect = "mfx") const;

    /// The equaliser with a preset, for in.wav's format.
    [[nodiscard]] ModuleAlone alone(const std::string& presetFile) const;

    /// A folder in which the module of that name is the recorder.
    [[nodiscard]] std::string recorderFolder(const std::string& name = "PELLUX64") const;

    [[nodiscard]] std::string resultPath() const { return path("result/out.wav"); }

    Sound sound;  ///< in.wav: stereo, 20 000 frames.
};

}  // namespace korva::test
