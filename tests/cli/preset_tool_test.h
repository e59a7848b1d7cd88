// What tests of `korva preset` start from: an endpoint's registry of their own, and some presets.
#pragma once

#include <string>
#include <vector>

#include "tests/cli/registry_tool_test.h"

namespace korva::test {

inline constexpr const char* firstEngine = "{14a6de13-1380-0e52-aee0-8803e93e40c8}";
inline constexpr const char* secondEngine = "{e31ba197-f8b2-5154-b081-1e8059747558}";
inline constexpr const char* thirdEngine = "{c9f475bc-13e4-6150-ae88-790995afc7c1}";

/// The key of the endpoint's set that presets go to.
inline constexpr const char* userSetKey = "HKLM\\Software\\Veltrane\\APO\\speakers\\FxProperties\\User";

/// A preset's text. `parameters` is what stands in its array.
[[nodiscard]] std::string presetJson(const std::string& engine, const std::string& parameters);

class PresetToolTest : public RegistryToolTest {
protected:
    /// `korva preset` with these arguments.
    [[nodiscard]] Launch presetLaunch(std::vector<std::string> arguments) const;
    [[nodiscard]] Outcome preset(std::vector<std::string> arguments) const;

    /// The path of a file with this text.
    [[nodiscard]] std::string file(const std::string& text, const std::string& name = "preset.json") const;

    /// `korva preset check` of a text.
    [[nodiscard]] Outcome check(const std::string& text, std::vector<std::string> options = {}) const;

    /// `korva preset install` of a file to the endpoint "speakers"; and `dump` from there.
    [[nodiscard]] Launch installLaunch(const std::string& path, const std::string& effect = "efx") const;
    [[nodiscard]] Launch dumpLaunch(const std::string& effect = "efx") const;

    /// An installation that has to succeed.
    void install(const std::string& text, const std::string& effect = "efx") const;
    /// What `dump` prints. A test failure if it doesn't succeed.
    [[nodiscard]] std::string dump(const std::string& effect = "efx") const;
};

}  // namespace korva::test
