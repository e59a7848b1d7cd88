// The place where instances show themselves.
#pragma once

#include <string>
#include <vector>

#include "platform/registry.h"

namespace korva::test {

/// Makes the key without which no instance shows itself, and takes it away again with all in it. Where
/// processes share a registry they share this key, so that tests with one run alone there.
class TelemetryBase {
public:
    TelemetryBase();
    ~TelemetryBase();
    TelemetryBase(const TelemetryBase&) = delete;
    TelemetryBase& operator=(const TelemetryBase&) = delete;

    /// The names of the instances' keys, in no order.
    [[nodiscard]] std::vector<std::string> instances() const;
    /// An instance's key to read and write; none if it isn't there.
    [[nodiscard]] platform::RegistryKey open(const std::string& name) const;

    [[nodiscard]] static std::string pathOf(const std::string& name);
};

}  // namespace korva::test
