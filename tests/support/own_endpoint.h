// An audio endpoint whose sets of properties are a test's own.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "platform/registry.h"
#include "tests/support/own_registry.h"

namespace korva::test {

/// Names an endpoint that nobody else has, and removes its sets with this object. A test has one at a time,
/// and neighbours of it.
class OwnEndpoint {
public:
    OwnEndpoint();
    /// A neighbour in the same registry, whose identifier differs by `name`.
    OwnEndpoint(const OwnEndpoint& first, const std::string& name);
    ~OwnEndpoint();
    OwnEndpoint(const OwnEndpoint&) = delete;
    OwnEndpoint& operator=(const OwnEndpoint&) = delete;

    [[nodiscard]] const std::string& id() const noexcept { return identifier; }

    /// The path of a set's key below the local machine's root.
    [[nodiscard]] std::string setPath(std::string_view name) const;

    /// Makes a set's key unless it is there, and opens it to read and to write.
    [[nodiscard]] platform::RegistryKey makeSet(std::string_view name) const;

    /// Deletes a set's key with its values.
    void deleteSet(std::string_view name) const;

private:
    // The first to come and the last to go: where there are many, the sets are in it.
    std::shared_ptr<OwnRegistry> registry;
    std::string identifier;
};

}  // namespace korva::test
