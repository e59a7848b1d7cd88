// What tests of `korva process` need beside the tool: sounds, and a disk with faults.
#pragma once

#include <vector>

#include "tests/cli/tool_test.h"
#include "tests/support/sound_files.h"

namespace korva::test {

/// The same with the disk of broken_disk.c, whose faults are set in the environment.
[[nodiscard]] Launch onBrokenDisk(Launch launch);

/// Whether two signals are the same to the bit.
[[nodiscard]] testing::AssertionResult sameBits(const std::vector<float>& actual,
                                                const std::vector<float>& expected);

}  // namespace korva::test
