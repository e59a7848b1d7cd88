// Lists of rights in the system's text form.
#pragma once

#include <gtest/gtest.h>
#include <windows.h>

#include <sddl.h>

#include <string>

namespace korva::platform {

/// The list of rights in a descriptor.
inline std::string rightsText(PSECURITY_DESCRIPTOR descriptor) {
    char* text = nullptr;
    EXPECT_TRUE(ConvertSecurityDescriptorToStringSecurityDescriptorA(
        descriptor, SDDL_REVISION_1, DACL_SECURITY_INFORMATION, &text, nullptr));
    std::string rights = text == nullptr ? "" : text;
    LocalFree(text);
    return rights;
}

/// The same rights as the system would write them: it has names for some numbers.
inline std::string rightsText(const char* rights) {
    PSECURITY_DESCRIPTOR descriptor = nullptr;
    EXPECT_TRUE(
        ConvertStringSecurityDescriptorToSecurityDescriptorA(rights, SDDL_REVISION_1, &descriptor, nullptr));
    std::string text = rightsText(descriptor);
    LocalFree(descriptor);
    return text;
}

}  // namespace korva::platform
