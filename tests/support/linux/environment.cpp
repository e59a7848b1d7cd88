#include "tests/support/environment.h"

#include <cstdlib>
#include <utility>

namespace korva::test {
namespace {

std::optional<std::string> valueOf(const std::string& name) {
    const char* const value = std::getenv(name.c_str());
    return value == nullptr ? std::nullopt : std::optional<std::string>(value);
}

}  // namespace

EnvironmentVariable::EnvironmentVariable(std::string variableName, const std::string& value)
    : name(std::move(variableName)), before(valueOf(name)) {
    set(value);
}

EnvironmentVariable::~EnvironmentVariable() {
    if (before) {
        set(*before);
    } else {
        unsetenv(name.c_str());
    }
}

// The C library changes one pointer for a variable that is there, and keeps the old text for its readers.
void EnvironmentVariable::set(const std::string& value) {
    setenv(name.c_str(), value.c_str(), 1);
}

}  // namespace korva::test
