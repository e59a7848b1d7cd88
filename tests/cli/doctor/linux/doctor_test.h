// What tests of `korva doctor` start from: a library, a module and a registry in which nothing is wrong.
#pragma once

#include <nlohmann/json.hpp>

#include <string>
#include <string_view>
#include <vector>

#include "tests/cli/registry_tool_test.h"

namespace korva::test {

inline constexpr const char* telemetryKey = "HKLM\\Software\\Kestrelwright";

class DoctorTest : public RegistryToolTest {
protected:
    DoctorTest();

    /// The tool over the test's registry.
    [[nodiscard]] Launch launchOf(std::vector<std::string> arguments) const;
    /// A command that goes well; what it prints.
    std::string done(std::vector<std::string> arguments) const;

    [[nodiscard]] Outcome doctor(std::vector<std::string> options = {}) const;

    /// Whether the only fault is one of that subject, of whose sentences one has each of `parts`.
    [[nodiscard]] testing::AssertionResult findsOnly(const std::string& subject,
                                                     const std::vector<std::string>& parts) const;
    /// Whether there is no fault.
    [[nodiscard]] testing::AssertionResult findsNothing() const;

    /// The endpoint's set of properties as the registry's commands have it.
    [[nodiscard]] std::string setKey(const std::string& set) const;
    /// The name of a property of the mode effect.
    [[nodiscard]] static std::string property(unsigned pid);
    /// A module's file in the place of the one that the endpoint needs.
    void putModule(const std::string& name) const;

    const std::string library = path("libKORVA.so");
    const std::string module = path("PELLUX64.so");
    std::string endpoint;  ///< Its identifier.
};

}  // namespace korva::test
