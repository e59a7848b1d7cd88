// What tests of the tool start from: a folder of their own, and the tool at hand.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "tests/support/child_process.h"
#include "tests/support/sound_files.h"

namespace korva::test {

class ToolTest : public testing::Test {
protected:
    ToolTest();
    ~ToolTest() override;

    /// A path in the test's folder.
    [[nodiscard]] std::string path(const std::string& name) const;

    /// The tool with these arguments; its temporary files are in `temporaryFolder`.
    [[nodiscard]] Launch tool(std::vector<std::string> arguments) const;
    /// The tool with the disk of broken_disk.c, whose faults are set in the environment.
    [[nodiscard]] Launch onBrokenDisk(std::vector<std::string> arguments) const;
    [[nodiscard]] Outcome runTool(std::vector<std::string> arguments) const;

    /// `korva process`, quiet.
    [[nodiscard]] Outcome process(const std::string& input, const std::string& output,
                                  std::vector<std::string> options = {}) const;

    /// Names of all that is in a folder, hidden files too, in order.
    [[nodiscard]] static std::vector<std::string> namesIn(const std::filesystem::path& folder);

    std::filesystem::path folder;           ///< For the test's files. Empty at first.
    std::filesystem::path temporaryFolder;  ///< Beside it. Empty at first.

private:
    std::filesystem::path root;
};

/// Whether the tool failed with one line that has all of `parts`, and said nothing else.
[[nodiscard]] testing::AssertionResult failedWith(const Outcome& outcome,
                                                  const std::vector<std::string>& parts);

/// Whether the tool did its work and said nothing.
[[nodiscard]] testing::AssertionResult succeededQuietly(const Outcome& outcome);

/// Whether two signals are the same to the bit.
[[nodiscard]] testing::AssertionResult sameBits(const std::vector<float>& actual,
                                                const std::vector<float>& expected);

}  // namespace korva::test
