// Who may do what with a key.
#include <gtest/gtest.h>
#include <windows.h>

#include <string>
#include <vector>

#include "tests/platform/registry_test.h"
#include "tests/platform/windows/rights_text.h"

namespace korva::platform {
namespace {

using namespace registry_result;

constexpr const char* everyoneMayAll = "D:(A;;0xF003F;;;WD)(A;;0xF003F;;;BA)";

std::string rightsOf(HKEY key) {
    std::vector<std::byte> descriptor(4096);
    auto size = static_cast<DWORD>(descriptor.size());
    EXPECT_EQ(RegGetKeySecurity(key, DACL_SECURITY_INFORMATION, descriptor.data(), &size), ERROR_SUCCESS);
    return rightsText(descriptor.data());
}

std::string rightsOf(const RegistryKey& key) {
    return rightsOf(reinterpret_cast<HKEY>(key.handle()));
}

class RegistrySharingTest : public RegistryTest {
protected:
    void SetUp() override {
        RegistryTest::SetUp();
        if (!systemTakesRights()) {
            GTEST_SKIP() << "the system takes no notice of the rights for a new key";
        }
    }

private:
    [[nodiscard]] bool systemTakesRights() const {
        SECURITY_ATTRIBUTES attributes{sizeof(SECURITY_ATTRIBUTES), nullptr, FALSE};
        EXPECT_TRUE(ConvertStringSecurityDescriptorToSecurityDescriptorA(
            everyoneMayAll, SDDL_REVISION_1, &attributes.lpSecurityDescriptor, nullptr));
        HKEY raw = nullptr;
        EXPECT_EQ(RegCreateKeyExW(reinterpret_cast<HKEY>(key.handle()), L"raw", 0, nullptr, 0, KEY_READ,
                                  &attributes, &raw, nullptr),
                  ERROR_SUCCESS);
        LocalFree(attributes.lpSecurityDescriptor);
        const bool isTaken = rightsOf(raw) == rightsText(everyoneMayAll);
        RegCloseKey(raw);
        return isTaken;
    }
};

TEST_F(RegistrySharingTest, LetsEveryoneDoAllWithAKeyThatIsSharedWithEveryone) {
    RegistryKey shared;
    ASSERT_EQ(key.create("shared", RegistryAccess::readWrite, shared, nullptr, RegistrySharing::everyone),
              success);
    EXPECT_EQ(rightsOf(shared), rightsText(everyoneMayAll));
}

TEST_F(RegistrySharingTest, SharesEachKeyThatIsMadeOnTheWay) {
    RegistryKey deepest;
    ASSERT_EQ(key.create("a\\b", RegistryAccess::readWrite, deepest, nullptr, RegistrySharing::everyone),
              success);
    RegistryKey between;
    ASSERT_EQ(key.open("a", RegistryAccess::readWrite, between), success);
    EXPECT_EQ(rightsOf(between), rightsText(everyoneMayAll));
    EXPECT_EQ(rightsOf(deepest), rightsText(everyoneMayAll));
}

TEST_F(RegistrySharingTest, LeavesTheRightsOfAKeyThatWasThere) {
    const std::string before = rightsOf(made("there"));
    RegistryKey again;
    ASSERT_EQ(key.create("there", RegistryAccess::readWrite, again, nullptr, RegistrySharing::everyone),
              success);
    EXPECT_EQ(rightsOf(again), before);
    EXPECT_NE(before, rightsText(everyoneMayAll));
}

}  // namespace
}  // namespace korva::platform
