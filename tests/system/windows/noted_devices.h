// The system's real devices, with a note of what an audio object asks them for.
#pragma once

#include <memory>

namespace korva::test {

/// While it lives, whoever makes the system's enumerator of devices in this process gets the real one, but
/// that its devices note some calls. Made on a thread that stays in the multithreaded apartment meanwhile.
class NotedDevices {
public:
    NotedDevices();
    ~NotedDevices();
    NotedDevices(const NotedDevices&) = delete;
    NotedDevices& operator=(const NotedDevices&) = delete;

    /// How often a device was asked for the system's own sets of effect properties, rightly.
    [[nodiscard]] int setsAskedFor() const noexcept;
    /// And for whatever else it could be activated as.
    [[nodiscard]] int otherActivations() const noexcept;

private:
    struct State;
    std::unique_ptr<State> state;
};

}  // namespace korva::test
