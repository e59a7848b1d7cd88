// What the tests of the registry share.
//
// One suite runs over the embedded registry, that of Windows and Wine's. Where they differ it claims no more
// than what our code relies on:
//
//   a change between a signal and `arm`   Windows tells of it, others need not: we arm, then read
//   a change while an armed key is armed  may be lost: we arm a key once for each signal
//   the armed key is deleted              Wine doesn't tell: `tellsOfKeyDeletion`, else we look at the key
//   a value is set to what it was         may tell or not
//   a sub-key comes or goes               may tell or not
//   the thread that armed ends            the key stays armed, by a flag that Windows needs for it
//   a deleted key that is open            1018 from every call, also when its name is made again
//   whom a new key is shared with         Wine takes no notice
//   a string or list without its end      its bytes come back as they were set
#pragma once

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "platform/registry.h"
#include "tests/support/own_registry.h"

namespace korva::platform {

using Bytes = std::vector<std::byte>;

inline Bytes bytes(std::initializer_list<int> values) {
    Bytes all;
    for (const int value : values) {
        all.push_back(static_cast<std::byte>(value));
    }
    return all;
}

/// Some bytes in which no two neighbours are alike, from `seed` on.
inline Bytes someBytes(std::size_t count, int seed = 1) {
    Bytes all(count);
    for (std::size_t i = 0; i < count; ++i) {
        all[i] = static_cast<std::byte>((i * 37 + static_cast<std::size_t>(seed)) & 0xFF);
    }
    return all;
}

/// A test with a key of its own, open with every access.
class RegistryTest : public testing::Test {
protected:
    void SetUp() override {
        ASSERT_EQ(machine.open(own.key(), RegistryAccess::readWrite, key), registry_result::success);
    }

    /// A key below it, made if it is missing.
    RegistryKey made(std::string_view path, RegistryAccess access = RegistryAccess::readWrite) const {
        RegistryKey opened;
        EXPECT_EQ(key.create(path, access, opened), registry_result::success) << path;
        return opened;
    }

    [[nodiscard]] RegistryResult openResult(std::string_view path) const {
        RegistryKey opened;
        return key.open(path, RegistryAccess::read, opened);
    }

    /// Marks a key as one that points elsewhere.
    void makeLink(const RegistryKey& marked) const {
        EXPECT_EQ(marked.setValue("SymbolicLinkValue", registry_type::string, {}), registry_result::success);
    }

    test::OwnRegistry own;
    RegistryKey machine = RegistryKey::root(RegistryRoot::localMachine);
    RegistryKey key;
};

/// The names of all values, or of all sub-keys, in their order.
inline std::vector<std::string> valueNames(const RegistryKey& key) {
    std::vector<std::string> names;
    std::string name;
    while (key.valueName(static_cast<std::uint32_t>(names.size()), 65536, name) == registry_result::success) {
        names.push_back(name);
    }
    return names;
}

inline std::vector<std::string> keyNames(const RegistryKey& key) {
    std::vector<std::string> names;
    std::string name;
    while (key.keyName(static_cast<std::uint32_t>(names.size()), name) == registry_result::success) {
        names.push_back(name);
    }
    return names;
}

/// The data of a value that is there.
inline Bytes dataOf(const RegistryKey& key, std::string_view name) {
    RegistryValue value;
    EXPECT_EQ(key.readValue(name, value), registry_result::success) << name;
    return value.data;
}

inline void setNumber(const RegistryKey& key, std::string_view name, std::uint32_t number) {
    const std::span<const std::uint32_t> numbers(&number, 1);
    EXPECT_EQ(key.setValue(name, registry_type::dword, std::as_bytes(numbers)), registry_result::success);
}

}  // namespace korva::platform
