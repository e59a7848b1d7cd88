#include "platform/windows/object_sharing.h"

#include <windows.h>

#include <sddl.h>

namespace korva::platform {

ObjectSharing::ObjectSharing(const char* rights) noexcept {
    own.nLength = sizeof(own);
    ConvertStringSecurityDescriptorToSecurityDescriptorA(rights, SDDL_REVISION_1, &own.lpSecurityDescriptor,
                                                         nullptr);
}

ObjectSharing::~ObjectSharing() {
    LocalFree(own.lpSecurityDescriptor);
}

SECURITY_ATTRIBUTES* ObjectSharing::attributes() noexcept {
    return own.lpSecurityDescriptor == nullptr ? nullptr : &own;
}

}  // namespace korva::platform
