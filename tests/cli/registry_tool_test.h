// What tests of `korva registry` start from: a registry of their own, and the tool that works on it.
#pragma once

#include <initializer_list>
#include <string>
#include <vector>

#include "tests/cli/tool_test.h"

namespace korva::test {

class RegistryToolTest : public ToolTest {
protected:
    /// `korva registry` with these arguments.
    [[nodiscard]] Launch registryLaunch(std::vector<std::string> arguments) const;
    [[nodiscard]] Outcome registry(std::vector<std::string> arguments) const;
    /// The same with `input` to read.
    [[nodiscard]] Outcome registryReading(const std::string& input, std::vector<std::string> arguments) const;

    /// What a command that goes well prints. A test failure if it doesn't.
    [[nodiscard]] std::string output(std::vector<std::string> arguments) const;
    /// A command that goes well and says nothing.
    void quietly(std::vector<std::string> arguments) const;

    /// What `export` prints, in UTF-8 with its mark.
    [[nodiscard]] std::string exported(const std::string& key) const;

    /// The registry's file. None at first.
    [[nodiscard]] std::string registryPath() const { return path("registry"); }
};

}  // namespace korva::test
