// What tests of `korva module check` start from.
#pragma once

#include <nlohmann/json.hpp>

#include <string>
#include <vector>

#include "tests/cli/tool_test.h"

namespace korva::test {

/// The file of a module with a fault, by its name.
[[nodiscard]] inline std::string faultyModule(const std::string& name) {
    return std::string(KORVA_TEST_MODULES) + "/" + name + ".so";
}

/// The examples: the smallest, and the equaliser.
inline constexpr const char* minimalModule = KORVA_EXAMPLE_MODULES "/minimal.so";
inline constexpr const char* equaliserModule = KORVA_EXAMPLE_MODULES "/PELLUX64.so";

class ModuleCheckTest : public ToolTest {
protected:
    /// `korva module check` with these arguments.
    [[nodiscard]] Launch checkLaunch(std::vector<std::string> arguments) const {
        arguments.insert(arguments.begin(), {"module", "check"});
        return tool(std::move(arguments));
    }
    [[nodiscard]] Outcome check(std::vector<std::string> arguments) const {
        return run(checkLaunch(std::move(arguments)));
    }

    /// The one JSON value that it prints.
    [[nodiscard]] nlohmann::json checkJson(std::vector<std::string> arguments) const {
        arguments.emplace_back("--json");
        const Outcome outcome = check(std::move(arguments));
        EXPECT_EQ(outcome.error, "");
        return nlohmann::json::parse(outcome.output, nullptr, false);
    }
};

/// One check's part of it; null if there is none.
[[nodiscard]] inline nlohmann::json resultOf(const nlohmann::json& json, const std::string& name) {
    for (const auto& result : json["checks"]) {
        if (result["name"] == name) {
            return result;
        }
    }
    return {};
}

/// Whether a check passed. How fast a sound is beside another is the machine's affair too.
[[nodiscard]] inline bool isNoFault(const nlohmann::json& result) {
    return result["result"] == "passed" || (result["name"] == "speed" && result["result"] == "warning");
}

}  // namespace korva::test
