#include "tests/cli/tool_test.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstdlib>
#include <utility>

// The leak sanitizer asks every program: what a library of others doesn't give back.
// NOLINTBEGIN(bugprone-reserved-identifier,readability-identifier-naming): the sanitizer's name
extern "C" [[gnu::visibility("default")]] const char* __lsan_default_suppressions();
extern "C" [[gnu::visibility("default")]] const char* __lsan_default_suppressions() {
    return "leak:libvorbis\n";
}
// NOLINTEND(bugprone-reserved-identifier,readability-identifier-naming)

namespace korva::test {
namespace {

testing::AssertionResult unexpected(const Outcome& outcome) {
    return testing::AssertionFailure()
           << "exit code " << outcome.exitCode << ", signal " << outcome.signal
           << "\nstandard output: " << outcome.output << "\nstandard error: " << outcome.error;
}

}  // namespace

ToolTest::ToolTest() {
    std::string name = (std::filesystem::temp_directory_path() / "korva-cli-XXXXXX").string();
    root = mkdtemp(name.data());
    folder = root / "files";
    temporaryFolder = root / "temporary";
    std::filesystem::create_directory(folder);
    std::filesystem::create_directory(temporaryFolder);
}

ToolTest::~ToolTest() {
    std::filesystem::remove_all(root);
}

std::string ToolTest::path(const std::string& name) const {
    return (folder / name).string();
}

Launch ToolTest::tool(std::vector<std::string> arguments) const {
    return {.program = KORVA_TOOL,
            .arguments = std::move(arguments),
            .environment = {{"TMPDIR", temporaryFolder.string()},
                            {"LSAN_OPTIONS", "print_suppressions=0:suppressions=" KORVA_LIBRARY_LEAKS}}};
}

Launch ToolTest::onBrokenDisk(std::vector<std::string> arguments) const {
    Launch launch = tool(std::move(arguments));
    launch.environment["LD_PRELOAD"] = KORVA_BROKEN_DISK;
    // The address sanitizer wants to come first, and needn't.
    launch.environment["ASAN_OPTIONS"] = "verify_asan_link_order=0";
    return launch;
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
        names.push_back(entry.path().filename().string());
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

testing::AssertionResult sameBits(const std::vector<float>& actual, const std::vector<float>& expected) {
    if (actual.size() != expected.size()) {
        return testing::AssertionFailure() << actual.size() << " samples, not " << expected.size();
    }
    for (std::size_t i = 0; i < actual.size(); ++i) {
        if (std::bit_cast<std::uint32_t>(actual[i]) != std::bit_cast<std::uint32_t>(expected[i])) {
            return testing::AssertionFailure()
                   << "sample " << i << " is " << actual[i] << ", not " << expected[i];
        }
    }
    return testing::AssertionSuccess();
}

}  // namespace korva::test
