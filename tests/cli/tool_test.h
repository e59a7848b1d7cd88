// What tests of the tool start from: a folder of their own, and the tool at hand.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "tests/support/child_process.h"
#include "tests/support/file_bytes.h"
#include "tests/support/own_folder.h"

namespace korva::test {

class ToolTest : public testing::Test {
protected:
    ToolTest();

    /// A path in the test's folder.
    [[nodiscard]] std::string path(const std::string& name) const;

    /// The tool with these arguments; its temporary files are in `temporaryFolder`.
    [[nodiscard]] Launch tool(std::vector<std::string> arguments) const;
    [[nodiscard]] Outcome runTool(std::vector<std::string> arguments) const;

    /// `korva process`, quiet.
    [[nodiscard]] Outcome process(const std::string& input, const std::string& output,
                                  std::vector<std::string> options = {}) const;

    /// Names of all that is in a folder, hidden files too, in order.
    [[nodiscard]] static std::vector<std::string> namesIn(const std::filesystem::path& folder);

private:
    OwnFolder root;

protected:
    const std::filesystem::path folder = root.path() / "files";               ///< The test's; empty at first.
    const std::filesystem::path temporaryFolder = root.path() / "temporary";  ///< Beside it; empty at first.
};

/// Whether the tool failed with one line that has all of `parts`, and said nothing else.
[[nodiscard]] testing::AssertionResult failedWith(const Outcome& outcome,
                                                  const std::vector<std::string>& parts);

/// Whether the tool did its work and said nothing.
[[nodiscard]] testing::AssertionResult succeededQuietly(const Outcome& outcome);

}  // namespace korva::test
