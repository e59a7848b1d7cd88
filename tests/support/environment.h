// A variable of the environment, for a time.
#pragma once

#include <optional>
#include <string>

namespace korva::test {

/// Sets a variable for this process and those that it starts, and puts back what was there. Made and ended
/// while nobody reads the environment; `set` may be called meanwhile too.
class EnvironmentVariable {
public:
    EnvironmentVariable(std::string variableName, const std::string& value);
    ~EnvironmentVariable();
    EnvironmentVariable(const EnvironmentVariable&) = delete;
    EnvironmentVariable& operator=(const EnvironmentVariable&) = delete;

    void set(const std::string& value);

private:
    const std::string name;
    const std::optional<std::string> before;
};

}  // namespace korva::test
