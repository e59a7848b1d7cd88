#include "tests/support/environment.h"

#include <windows.h>

#include <utility>

namespace korva::test {
namespace {

std::optional<std::string> valueOf(const std::string& name) {
    std::string value(GetEnvironmentVariableA(name.c_str(), nullptr, 0), '\0');
    if (value.empty()) {
        return std::nullopt;
    }
    value.resize(GetEnvironmentVariableA(name.c_str(), value.data(), static_cast<DWORD>(value.size())));
    return value;
}

}  // namespace

EnvironmentVariable::EnvironmentVariable(std::string variableName, const std::string& value)
    : name(std::move(variableName)), before(valueOf(name)) {
    set(value);
}

EnvironmentVariable::~EnvironmentVariable() {
    SetEnvironmentVariableA(name.c_str(), before ? before->c_str() : nullptr);
}

void EnvironmentVariable::set(const std::string& value) {
    SetEnvironmentVariableA(name.c_str(), value.c_str());
}

}  // namespace korva::test
