#include "tests/cli/registry_tool_test.h"

#include <span>
#include <utility>

#include "korva/registry/reg_characters.h"
#include "platform/unicode.h"

namespace korva::test {

Launch RegistryToolTest::registryLaunch(std::vector<std::string> arguments) const {
    arguments.insert(arguments.begin(), "registry");
    Launch launch = tool(std::move(arguments));
    launch.environment["KORVA_REGISTRY"] = registryPath();
    return launch;
}

Outcome RegistryToolTest::registry(std::vector<std::string> arguments) const {
    return run(registryLaunch(std::move(arguments)));
}

Outcome RegistryToolTest::registryReading(const std::string& input,
                                          std::vector<std::string> arguments) const {
    Launch launch = registryLaunch(std::move(arguments));
    launch.input = input;
    return run(launch);
}

std::string RegistryToolTest::output(std::vector<std::string> arguments) const {
    const Outcome outcome = registry(std::move(arguments));
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(outcome.error, "");
    return outcome.output;
}

void RegistryToolTest::quietly(std::vector<std::string> arguments) const {
    EXPECT_TRUE(succeededQuietly(registry(std::move(arguments))));
}

std::string RegistryToolTest::exported(const std::string& key) const {
    const std::string text = output({"export", key});
    return platform::toUtf8(tool::unitsOf(std::as_bytes(std::span(text))));
}

}  // namespace korva::test
