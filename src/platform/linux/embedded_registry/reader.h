// What is read from the registry's file.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "embedded_registry/key_search.h"
#include "platform/mutex.h"
#include "platform/registry.h"

namespace korva::platform::embedded {

/// The names of a key's values in their order, as they were at one sequence number of the key.
struct ValueNames {
    std::int64_t sequence = -1;
    std::vector<std::string> names;
};

/// A connection that only reads, so it waits for no writer. Each member sees one state of the file. Members
/// throw `Failure`.  [any, blocks]
class Reader {
public:
    Reader(const std::string& path, Connection::Kind kind);

    /// 2 if a part is missing, 681 for a link, 1018 if the key to start from is deleted.
    [[nodiscard]] RegistryResult find(const KeyChain& from, const Path& path, KeyChain& found);
    /// `value` is as it was unless the result is 0.
    [[nodiscard]] RegistryResult readValue(KeyId key, std::string_view folded, RegistryValue& value);
    /// Leaves `names` alone if they are still right.
    [[nodiscard]] RegistryResult refresh(KeyId key, ValueNames& names);
    [[nodiscard]] RegistryResult keyName(KeyId key, std::uint32_t index, std::string& name);
    [[nodiscard]] std::optional<std::int64_t> sequence(KeyId key);

private:
    Mutex mutex;
    Connection connection;
    KeySearch search;
    Statement valueOf;
    Statement valueNamesOf;
    Statement keyNameOf;
};

}  // namespace korva::platform::embedded
