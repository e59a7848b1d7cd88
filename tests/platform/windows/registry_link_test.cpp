#include <gtest/gtest.h>
#include <windows.h>

#include <string>

#include "platform/key_tree.h"
#include "platform/unicode.h"
#include "tests/platform/registry_test.h"

namespace korva::platform {
namespace {

using namespace registry_result;
using RegistryLinkTest = RegistryTest;

/// A real link of the system's. It goes with its object, before what it points at.
class RegistryLink {
public:
    /// Both are paths below the local machine's root.
    RegistryLink(const std::string& path, const std::string& target) {
        constexpr DWORD options = REG_OPTION_CREATE_LINK | REG_OPTION_VOLATILE;
        EXPECT_EQ(RegCreateKeyExW(HKEY_LOCAL_MACHINE, toWide(path).c_str(), 0, nullptr, options,
                                  KEY_ALL_ACCESS | KEY_CREATE_LINK, nullptr, &link, nullptr),
                  ERROR_SUCCESS);
        const WideString place = L"\\Registry\\Machine\\" + toWide(target);
        EXPECT_EQ(RegSetValueExW(link, L"SymbolicLinkValue", 0, REG_LINK,
                                 reinterpret_cast<const BYTE*>(place.data()),
                                 static_cast<DWORD>(place.size() * sizeof(WCHAR))),
                  ERROR_SUCCESS);
    }
    // Only the open link can be deleted: its name leads to what it points at.
    ~RegistryLink() {
        using NtDeleteKey = LONG(NTAPI*)(HANDLE);
        const auto found = GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "NtDeleteKey");
        reinterpret_cast<NtDeleteKey>(reinterpret_cast<void*>(found))(link);
        RegCloseKey(link);
    }
    RegistryLink(const RegistryLink&) = delete;
    RegistryLink& operator=(const RegistryLink&) = delete;

private:
    HKEY link = nullptr;
};

TEST_F(RegistryLinkTest, LeadsElsewhereForOthers) {
    setNumber(made("target"), "v", 1);
    const RegistryLink link(own.key() + "\\link", own.key() + "\\target");
    HKEY followed = nullptr;
    ASSERT_EQ(RegOpenKeyExW(HKEY_LOCAL_MACHINE, toWide(own.key() + "\\link").c_str(), 0, KEY_READ, &followed),
              ERROR_SUCCESS);
    EXPECT_EQ(RegQueryValueExW(followed, L"v", nullptr, nullptr, nullptr, nullptr), ERROR_SUCCESS);
    RegCloseKey(followed);
}

TEST_F(RegistryLinkTest, IsRefused) {
    setNumber(made("target"), "v", 1);
    const RegistryLink link(own.key() + "\\link", own.key() + "\\target");

    RegistryKey opened;
    bool created = false;
    EXPECT_EQ(key.open("link", RegistryAccess::read, opened), isLink);
    EXPECT_EQ(key.open("link", RegistryAccess::readWrite, opened), isLink);
    EXPECT_EQ(key.create("link", RegistryAccess::readWrite, opened, &created), isLink);
    EXPECT_FALSE(opened);
    EXPECT_EQ(dataOf(made("target"), "v"), bytes({1, 0, 0, 0}));
}

TEST_F(RegistryLinkTest, IsRefusedThoughItLeadsNowhere) {
    const RegistryLink link(own.key() + "\\link", own.key() + "\\missing");
    EXPECT_EQ(openResult("link"), isLink);
}

TEST_F(RegistryLinkTest, IsRefusedAmongSeveralChanges) {
    const RegistryLink link(own.key() + "\\link", own.key() + "\\target");
    const std::vector<RegistryChange> changes = {
        {.kind = RegistryChange::Kind::setValue, .path = own.key() + "\\link", .name = "v"}};
    EXPECT_EQ(applyRegistryChanges(changes), isLink);
    EXPECT_TRUE(valueNames(made("target")).empty());
}

TEST_F(RegistryLinkTest, IsDeletedItselfAndItsTargetStays) {
    made("target");
    const RegistryLink link(own.key() + "\\link", own.key() + "\\target");
    EXPECT_EQ(key.deleteKey("link"), success);
    EXPECT_EQ(openResult("link"), notFound);
    EXPECT_EQ(openResult("target"), success);
}

TEST_F(RegistryLinkTest, IsNoWayOutOfATreeThatIsDeleted) {
    made("target\\below");
    made("tree\\a\\aa");
    const RegistryLink link(own.key() + "\\tree\\a\\link", own.key() + "\\target");
    EXPECT_EQ(key.deleteTree("tree"), success);
    EXPECT_EQ(openResult("tree"), notFound);
    EXPECT_EQ(openResult("target\\below"), success);
}

TEST_F(RegistryLinkTest, IsATreeOfItsOwn) {
    made("target\\below");
    const RegistryLink link(own.key() + "\\link", own.key() + "\\target");
    EXPECT_EQ(key.deleteTree("link"), success);
    EXPECT_EQ(openResult("link"), notFound);
    EXPECT_EQ(openResult("target\\below"), success);
}

TEST_F(RegistryLinkTest, BelowAKeyThatIsTakenApartGoesAlone) {
    made("target");
    made("tree\\a");
    const RegistryLink link(own.key() + "\\tree\\link", own.key() + "\\target");
    EXPECT_EQ(deleteKeyTree(key, "tree"), success);
    EXPECT_EQ(openResult("tree"), notFound);
    EXPECT_EQ(openResult("target"), success);
}

}  // namespace
}  // namespace korva::platform
