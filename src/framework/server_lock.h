// Whether a host still needs this library.
#pragma once

namespace korva::framework {

/// Something of this library that a host has, or may get back to: an object, a class object, a wish that it
/// stay. While there is one, the library must not be unloaded.  [any]
class ServerLock {
public:
    ServerLock() noexcept { add(); }
    ~ServerLock() { remove(); }
    ServerLock(const ServerLock&) = delete;
    ServerLock& operator=(const ServerLock&) = delete;

    [[nodiscard]] static bool isHeld() noexcept;

private:
    static void add() noexcept;
    static void remove() noexcept;
};

}  // namespace korva::framework
