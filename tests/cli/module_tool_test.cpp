#include "tests/cli/module_tool_test.h"

#include <algorithm>
#include <utility>

#include "korva/preset/preset_file.h"

namespace korva::test {

ModuleToolTest::ModuleToolTest() : sound(makeNoiseFor(0x3, 20'000)) {
    writeSound(path("in.wav"), sound);
    std::filesystem::create_directory(path("result"));
}

Launch ModuleToolTest::playLaunch(const std::vector<std::string>& options) const {
    std::vector<std::string> arguments = {"process", path("in.wav"), resultPath()};
    const auto addUnlessSaid = [&](const char* option, const char* value) {
        if (std::ranges::find(options, option) == options.end()) {
            arguments.insert(arguments.end(), {option, value});
        }
    };
    addUnlessSaid("--effect", "mfx");
    addUnlessSaid("--module-dir", KORVA_EXAMPLE_MODULES);
    arguments.insert(arguments.end(), options.begin(), options.end());
    Launch launch = tool(std::move(arguments));
    launch.environment["KORVA_REGISTRY"] = registryPath();
    return launch;
}

std::vector<float> ModuleToolTest::played(const std::vector<std::string>& options) const {
    const Outcome outcome = play(options);
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(outcome.error, "");
    return readSound(resultPath()).samples;
}

ModuleToolTest::Json ModuleToolTest::report(std::vector<std::string> options) const {
    options.emplace_back("--json");
    const Outcome outcome = play(options);
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(outcome.error, "");
    return Json::parse(outcome.output);
}

testing::AssertionResult ModuleToolTest::isRefused(const std::vector<std::string>& options,
                                                   const std::vector<std::string>& parts) const {
    const std::size_t before = endpointCount();
    if (auto result = failedWith(play(options), parts); !result) {
        return result;
    }
    return namesIn(path("result")).empty() && namesIn(temporaryFolder).empty() && endpointCount() == before
               ? testing::AssertionSuccess()
               : testing::AssertionFailure() << "a file or an endpoint is left";
}

Outcome ModuleToolTest::endpoint(std::vector<std::string> arguments) const {
    arguments.insert(arguments.begin(), "endpoint");
    Launch launch = tool(std::move(arguments));
    launch.environment["KORVA_REGISTRY"] = registryPath();
    return run(launch);
}

std::string ModuleToolTest::addEndpoint(const std::vector<std::string>& options) const {
    std::vector<std::string> arguments = {"add", "Speakers"};
    arguments.insert(arguments.end(), options.begin(), options.end());
    std::string text = endpoint(arguments).output;
    EXPECT_TRUE(text.ends_with("}\n")) << text;
    text.pop_back();
    return text.substr(text.rfind('\n') + 1);
}

std::size_t ModuleToolTest::endpointCount() const {
    return Json::parse(endpoint({"list", "--json"}).output).size();
}

void ModuleToolTest::installAt(const std::string& id, const std::string& file,
                               const std::string& effect) const {
    EXPECT_TRUE(succeededQuietly(preset({"install", file, "--endpoint", id, "--effect", effect, "--quiet"})));
}

ModuleAlone ModuleToolTest::alone(const std::string& presetFile) const {
    rt::EngineFormat format;
    format.Assign(48000, 2, 0x3);
    return {KORVA_EXAMPLE_MODULES "/PELLUX64.so", tool::presetOfFile(presetFile), format};
}

std::string ModuleToolTest::recorderFolder(const std::string& name) const {
    std::filesystem::create_directories(path("modules"));
    std::filesystem::copy_file(KORVA_TEST_MODULES "/recorder.so", path("modules/" + name + ".so"),
                               std::filesystem::copy_options::overwrite_existing);
    return path("modules");
}

}  // namespace korva::test
