#include "tests/cli/tool_test.h"

#include <algorithm>
#include <utility>

#include "korva/file_path.h"

namespace korva::test {
namespace {

testing::AssertionResult unexpected(const Outcome& outcome) {
    return testing::AssertionFailure()
           << "exit code " << outcome.exitCode << ", signal " << outcome.signal
           << "\nstandard output: " << outcome.output << "\nstandard error: " << outcome.error;
}

}  // namespace

ToolTest::ToolTest() {
    std::filesystem::create_directory(folder);
    std::filesystem::create_directory(temporaryFolder);
}

std::string ToolTest::path(const std::string& name) const {
    return tool::textOfPath(folder / tool::pathOfText(name));
}

Launch ToolTest::tool(std::vector<std::string> arguments) const {
    return {.program = KORVA_TOOL,
            .arguments = std::move(arguments),
            .environment = {{"TMPDIR", tool::textOfPath(temporaryFolder)},
                            {"LSAN_OPTIONS", "print_suppressions=0:suppressions=" KORVA_LIBRARY_LEAKS}}};
}

Outcome ToolTest::runTool(std::vector<std::string> arguments) const {
    return run(tool(std::move(arguments)));
}

Outcome ToolTest::process(const std::string& input, const std::string& output,
                          std::vector<std::string> options) const {
    std::vector<std::string> arguments = {"process", input, output, "--quiet"};
    arguments.insert(arguments.end(), options.begin(), options.end());
    return runTool(arguments);
}

std::vector<std::string> ToolTest::namesIn(const std::filesystem::path& folder) {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        names.push_back(tool::textOfPath(entry.path().filename()));
    }
    std::ranges::sort(names);
    return names;
}

testing::AssertionResult failedWith(const Outcome& outcome, const std::vector<std::string>& parts) {
    const bool oneLine =
        outcome.error.starts_with("korva: error: ") && outcome.error.find('\n') == outcome.error.size() - 1;
    const bool complete = std::ranges::all_of(
        parts, [&](const std::string& part) { return outcome.error.find(part) != std::string::npos; });
    if (outcome.exitCode == 2 && outcome.output.empty() && oneLine && complete) {
        return testing::AssertionSuccess();
    }
    return unexpected(outcome);
}

testing::AssertionResult succeededQuietly(const Outcome& outcome) {
    if (outcome.exitCode == 0 && outcome.output.empty() && outcome.error.empty()) {
        return testing::AssertionSuccess();
    }
    return unexpected(outcome);
}

}  // namespace korva::test
