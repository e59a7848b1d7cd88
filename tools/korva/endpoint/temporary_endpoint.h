// An endpoint for the time of a command.
#pragma once

#include <string>

namespace korva::tool {

/// Makes an endpoint, and removes it with its settings when this goes. A tool that is killed leaves it: its
/// name tells whose it is.
class TemporaryEndpoint {
public:
    /// Throws `ToolError`.
    explicit TemporaryEndpoint(const std::string& name);
    ~TemporaryEndpoint();
    TemporaryEndpoint(const TemporaryEndpoint&) = delete;
    TemporaryEndpoint& operator=(const TemporaryEndpoint&) = delete;

    [[nodiscard]] const std::string& id() const noexcept { return identifier; }

private:
    const std::string identifier;
};

}  // namespace korva::tool
