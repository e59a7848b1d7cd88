// Who may do what with an object of the system's, for those that other users are to reach.
#pragma once

#include <windef.h>

#include <minwinbase.h>

namespace korva::platform {

/// What a list of rights in the system's text form says. Made once and kept: the objects take a copy.
class ObjectSharing {
public:
    explicit ObjectSharing(const char* rights) noexcept;
    ~ObjectSharing();
    ObjectSharing(const ObjectSharing&) = delete;
    ObjectSharing& operator=(const ObjectSharing&) = delete;

    /// Null if there was no memory for it: what is made with null has other rights.  [any]
    [[nodiscard]] SECURITY_ATTRIBUTES* attributes() noexcept;

private:
    SECURITY_ATTRIBUTES own{};
};

}  // namespace korva::platform
