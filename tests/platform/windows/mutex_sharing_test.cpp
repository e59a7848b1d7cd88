// Who may do what with a mutex.
#include <gtest/gtest.h>
#include <windows.h>

#include <aclapi.h>

#include <string>

#include "platform/named_mutex.h"
#include "platform/new_guid.h"
#include "platform/property_key.h"
#include "tests/platform/windows/rights_text.h"

namespace korva::platform {
namespace {

std::string newName() {
    return "Global\\" + guidText(newGuid());
}

std::string rightsOf(HANDLE object) {
    PSECURITY_DESCRIPTOR descriptor = nullptr;
    EXPECT_EQ(GetSecurityInfo(object, SE_KERNEL_OBJECT, DACL_SECURITY_INFORMATION, nullptr, nullptr, nullptr,
                              nullptr, &descriptor),
              DWORD{ERROR_SUCCESS});
    std::string rights = rightsText(descriptor);
    LocalFree(descriptor);
    return rights;
}

TEST(NamedMutexSharing, LetsEveryoneWaitAndAdministratorsDoAll) {
    const std::string name = newName();
    const NamedMutex mutex = NamedMutex::create(name);
    HANDLE const handle = OpenMutexA(READ_CONTROL, FALSE, name.c_str());
    ASSERT_NE(handle, nullptr);
    EXPECT_EQ(rightsOf(handle), rightsText("D:(A;;0x100000;;;WD)(A;;0xF003F;;;BA)"));
    CloseHandle(handle);
}

TEST(NamedMutexSharing, IsOwnedByTheThreadThatMadeIt) {
    const std::string name = newName();
    const NamedMutex mutex = NamedMutex::create(name);
    HANDLE const handle = OpenMutexA(SYNCHRONIZE, FALSE, name.c_str());
    ASSERT_NE(handle, nullptr);
    DWORD waited = WAIT_FAILED;
    HANDLE const other = CreateThread(
        nullptr, 0,
        [](void* asked) -> DWORD { return WaitForSingleObject(*static_cast<const HANDLE*>(asked), 0); },
        const_cast<HANDLE*>(&handle), 0, nullptr);
    WaitForSingleObject(other, INFINITE);
    GetExitCodeThread(other, &waited);
    EXPECT_EQ(waited, DWORD{WAIT_TIMEOUT});
    CloseHandle(other);
    CloseHandle(handle);
}

TEST(NamedMutexSharing, IsNotMetByAnEventOfItsName) {
    const std::string name = newName();
    HANDLE const event = CreateEventA(nullptr, TRUE, FALSE, name.c_str());
    ASSERT_NE(event, nullptr);
    EXPECT_FALSE(isMutexHeld(name));
    EXPECT_FALSE(NamedMutex::create(name));
    CloseHandle(event);
}

}  // namespace
}  // namespace korva::platform
