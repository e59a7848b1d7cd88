// Running another program on any system.
#pragma once

#include <string>
#include <vector>

namespace korva::test {

/// Runs a program with what this one has for environment, and waits for its end. Its exit code; -1 if it
/// couldn't be run, or was ended by a signal. No argument has a quote in it, or ends in a backslash. [blocks]
[[nodiscard]] int runProgram(const std::string& program, const std::vector<std::string>& arguments);

}  // namespace korva::test
