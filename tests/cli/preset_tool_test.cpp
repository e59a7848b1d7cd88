#include "tests/cli/preset_tool_test.h"

#include <utility>

namespace korva::test {

std::string presetJson(const std::string& engine, const std::string& parameters) {
    return "{\"engine\": \"" + engine + "\", \"presetVersion\": 1, \"hardware\": false, \"parameters\": [" +
           parameters + "]}";
}

Launch PresetToolTest::presetLaunch(std::vector<std::string> arguments) const {
    arguments.insert(arguments.begin(), "preset");
    Launch launch = tool(std::move(arguments));
    launch.environment["KORVA_REGISTRY"] = registryPath();
    return launch;
}

Outcome PresetToolTest::preset(std::vector<std::string> arguments) const {
    return run(presetLaunch(std::move(arguments)));
}

std::string PresetToolTest::file(const std::string& text, const std::string& name) const {
    writeBytes(path(name), text);
    return path(name);
}

Outcome PresetToolTest::check(const std::string& text, std::vector<std::string> options) const {
    options.insert(options.begin(), {"check", file(text)});
    return preset(std::move(options));
}

Launch PresetToolTest::installLaunch(const std::string& path, const std::string& effect) const {
    return presetLaunch({"install", path, "--endpoint", "speakers", "--effect", effect, "--quiet"});
}

Launch PresetToolTest::dumpLaunch(const std::string& effect) const {
    return presetLaunch({"dump", "--endpoint", "speakers", "--effect", effect});
}

void PresetToolTest::install(const std::string& text, const std::string& effect) const {
    EXPECT_TRUE(succeededQuietly(run(installLaunch(file(text), effect)))) << text;
}

std::string PresetToolTest::dump(const std::string& effect) const {
    const Outcome outcome = run(dumpLaunch(effect));
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(outcome.error, "");
    return outcome.output;
}

}  // namespace korva::test
