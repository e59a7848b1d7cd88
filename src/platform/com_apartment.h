// A thread's right to use COM.
#pragma once

namespace korva::platform {

/// The creating thread's membership in the multithreaded COM apartment, for the life of this object. A thread
/// that is in an apartment of its own already stays there, and may use COM from there. Destroyed on the
/// thread that created it; may be nested. Linux has no COM: it does nothing there.  [any, blocks]
class ComApartment {
public:
    ComApartment() noexcept;
    ~ComApartment();
    ComApartment(const ComApartment&) = delete;
    ComApartment& operator=(const ComApartment&) = delete;

private:
    [[maybe_unused]] bool isMember = false;  ///< Whether this object has to leave.
};

}  // namespace korva::platform
