// Changes of keys and values, within a transaction of the one who calls.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

#include "embedded_registry/key_search.h"
#include "platform/registry.h"

namespace korva::platform::embedded {

/// What isn't done in full is to be rolled back: a member that throws, or gives another result than 0, may
/// have begun. Members throw `Failure`.
class Changes {
public:
    explicit Changes(Connection& connection);

    /// To be called first in each transaction.
    void begin() noexcept { next = 0; }
    /// Whether anything since then took a sequence number.
    [[nodiscard]] bool haveNumber() const noexcept { return next != 0; }

    /// Goes down from `chain`, making the keys that are missing.
    [[nodiscard]] RegistryResult create(KeyChain& chain, const Path& path, bool& created);
    [[nodiscard]] RegistryResult deleteKey(const KeyChain& from, const Path& path);
    [[nodiscard]] RegistryResult deleteTree(const KeyChain& from, const Path& path);
    [[nodiscard]] RegistryResult setValue(const KeyChain& key, std::string_view name, std::string_view folded,
                                          std::uint32_t type, std::span<const std::byte> data);
    [[nodiscard]] RegistryResult deleteValue(const KeyChain& key, std::string_view folded);

    KeySearch search;

private:
    /// Gives the next sequence number to the key and all above it; 0 if the key is deleted.
    std::int64_t number(const KeyChain& key);
    KeyId addKey(KeyId parent, const Name& name);
    [[nodiscard]] RegistryResult find(KeyChain& chain, const Path& path);
    [[nodiscard]] std::vector<KeyId> childrenOf(KeyId key);
    [[nodiscard]] bool hasChildren(KeyId key);
    RegistryResult remove(const KeyChain& parent, const Name& name, KeyId key);
    void removeBelow(KeyId key);
    void removeRow(KeyId key);

    sqlite3* connection;
    std::int64_t next = 0;  ///< The last number that was given in this transaction; 0 for none.
    Statement setSequence;
    Statement insertKey;
    Statement insertName;
    Statement childIds;
    Statement deleteName;
    Statement deleteNamesBelow;
    Statement deleteRow;
    Statement deleteValues;
    Statement deleteOneValue;
    Statement upsertValue;
};

}  // namespace korva::platform::embedded
