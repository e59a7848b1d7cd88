#include <gtest/gtest.h>
#include <windows.h>

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "platform/key_tree.h"
#include "platform/unicode.h"
#include "platform/windows/registry_handle.h"
#include "tests/platform/registry_test.h"

namespace korva::platform {
namespace {

using namespace registry_result;

HKEY numbered(std::uint32_t number) {
    return reinterpret_cast<HKEY>(static_cast<std::intptr_t>(static_cast<std::int32_t>(number)));
}

HKEY systemKey(const RegistryKey& key) {
    return reinterpret_cast<HKEY>(key.handle());
}

TEST(RegistryHandle, IsPredefinedForTheSystemsRootsOnly) {
    for (std::uint32_t number = 0x80000000; number <= 0x80000007; ++number) {
        EXPECT_TRUE(isPredefined(numbered(number))) << number;
    }
    for (const HKEY root : {HKEY_CLASSES_ROOT, HKEY_CURRENT_USER, HKEY_LOCAL_MACHINE, HKEY_USERS,
                            HKEY_PERFORMANCE_DATA, HKEY_PERFORMANCE_TEXT, HKEY_PERFORMANCE_NLSTEXT,
                            HKEY_CURRENT_CONFIG, HKEY_DYN_DATA, HKEY_CURRENT_USER_LOCAL_SETTINGS}) {
        EXPECT_TRUE(isPredefined(root)) << root;
    }
    for (const std::uint32_t number : {0u, 4u, 0x7FFFFFFFu, 0x80000008u, 0x8000004Fu, 0x80000051u,
                                       0x8000005Fu, 0x80000061u, 0xFFFFFFFFu}) {
        EXPECT_FALSE(isPredefined(numbered(number))) << number;
    }
}

TEST_F(RegistryTest, HasTheSystemsRootsForItsOwn) {
    EXPECT_EQ(systemKey(RegistryKey::root(RegistryRoot::classesRoot)), HKEY_CLASSES_ROOT);
    EXPECT_EQ(systemKey(RegistryKey::root(RegistryRoot::currentUser)), HKEY_CURRENT_USER);
    EXPECT_EQ(systemKey(RegistryKey::root(RegistryRoot::localMachine)), HKEY_LOCAL_MACHINE);
}

TEST_F(RegistryTest, ClosesAKeyWithItsLastShare) {
    RegistryKey share = made("sub");
    const HKEY handle = systemKey(share);
    RegistryKey other = share;
    share = {};
    EXPECT_EQ(RegFlushKey(handle), ERROR_SUCCESS);
    other = {};
    EXPECT_EQ(RegFlushKey(handle), ERROR_INVALID_HANDLE);
}

TEST_F(RegistryTest, ClosesAKeyThatItRefusesForALink) {
    makeLink(made("link"));
    // Numbers of handles grow by four, and one that was closed is given again.
    const std::uintptr_t before = made("before").handle();
    for (int i = 0; i < 100; ++i) {
        EXPECT_EQ(openResult("link"), isLink);
    }
    EXPECT_LT(made("after").handle(), before + 50 * 4);
}

TEST_F(RegistryTest, StoresExactlyTheBytesOfAString) {
    // Zero bytes lie behind the data, where the system looks for a terminator.
    const std::vector<std::byte> text = bytes({'M', 'F', 'X', 0, 'x', 0, 0, 0, 0, 0});
    for (const DWORD type : {DWORD{REG_SZ}, DWORD{REG_EXPAND_SZ}, DWORD{REG_MULTI_SZ}}) {
        for (DWORD size = 0; size <= text.size(); ++size) {
            ASSERT_EQ(key.setValue("v", type, std::span(text).first(size)), success);
            DWORD stored = 0;
            DWORD storedType = 0;
            EXPECT_EQ(RegQueryValueExW(systemKey(key), L"v", nullptr, &storedType, nullptr, &stored),
                      ERROR_SUCCESS);
            EXPECT_EQ(stored, size);
            EXPECT_EQ(storedType, type);
        }
    }
}

TEST_F(RegistryTest, ReadsStringsOfOthersWithoutATerminatorOfItsOwn) {
    const std::array<WCHAR, 3> text = {L'a', L'b', L'c'};
    ASSERT_EQ(
        RegSetValueExW(systemKey(key), L"v", 0, REG_BINARY, reinterpret_cast<const BYTE*>(text.data()), 6),
        ERROR_SUCCESS);
    EXPECT_EQ(dataOf(key, "v"), bytes({'a', 0, 'b', 0, 'c', 0}));
    ASSERT_EQ(RegSetValueExW(systemKey(key), L"w", 0, REG_SZ, reinterpret_cast<const BYTE*>(L"ab"), 6),
              ERROR_SUCCESS);
    EXPECT_EQ(dataOf(key, "w"), bytes({'a', 0, 'b', 0, 0, 0}));
}

TEST_F(RegistryTest, SharesNamesWithTheSystem) {
    setNumber(made("\u00C4\u20AC\U0001F3B5"), "\u00DF", 1);
    const WideString path = toWide(own.key() + "\\\u00E4\u20AC\U0001F3B5");
    HKEY opened = nullptr;
    ASSERT_EQ(RegOpenKeyExW(HKEY_LOCAL_MACHINE, path.c_str(), 0, KEY_READ, &opened), ERROR_SUCCESS);
    EXPECT_EQ(RegQueryValueExW(opened, L"\u00DF", nullptr, nullptr, nullptr, nullptr), ERROR_SUCCESS);
    RegCloseKey(opened);
}

/// A key whose name is half a character: the system takes any units.
void makeKeyThatNoTextNames(const RegistryKey& parent) {
    const WCHAR name[] = {0xD800, 0};
    HKEY made = nullptr;
    ASSERT_EQ(RegCreateKeyExW(systemKey(parent), name, 0, nullptr, 0, KEY_READ, nullptr, &made, nullptr),
              ERROR_SUCCESS);
    RegCloseKey(made);
}

TEST_F(RegistryTest, StepsOverAKeyThatNoTextNamesAndTakesAllElse) {
    makeKeyThatNoTextNames(made("tree"));
    made("tree\\z\\zz");
    EXPECT_EQ(deleteKeyTree(key, "tree"), accessDenied);
    EXPECT_EQ(openResult("tree\\z"), notFound);
}

TEST_F(RegistryTest, TakesAKeyThatNoTextNamesWithItsTree) {
    makeKeyThatNoTextNames(made("tree"));
    EXPECT_EQ(key.deleteTree("tree"), success);
    EXPECT_EQ(openResult("tree"), notFound);
}

TEST_F(RegistryTest, KeepsOfSeveralChangesThoseBeforeTheOneThatFails) {
    const std::vector<RegistryChange> changes = {
        {.kind = RegistryChange::Kind::createKey, .path = own.key() + "\\before"},
        {.kind = RegistryChange::Kind::createKey, .path = "\xFF"}};
    EXPECT_EQ(applyRegistryChanges(changes), invalidParameter);
    EXPECT_EQ(openResult("before"), success);
}

}  // namespace
}  // namespace korva::platform
