// A registry for one test.
#pragma once

#include <memory>
#include <string>

namespace korva::test {

/// While it lives, a test has a place in the registry that nobody else uses. Where the registry is a file,
/// that is a file of the test's own in a folder of its own, for this process and those that it starts; the
/// system's registry is shared, so a test keeps to keys below `key()` there.
///
/// Throws if there is no such place. One at a time in a process.
class OwnRegistry {
public:
    OwnRegistry();
    ~OwnRegistry();
    OwnRegistry(const OwnRegistry&) = delete;
    OwnRegistry& operator=(const OwnRegistry&) = delete;

    /// The path below HKEY_LOCAL_MACHINE of a key that is there and empty at first.
    [[nodiscard]] std::string key() const;

private:
    struct State;
    std::unique_ptr<State> state;
};

}  // namespace korva::test
