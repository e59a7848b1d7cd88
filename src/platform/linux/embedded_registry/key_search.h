// Finding keys, in whatever transaction the connection is in.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include "embedded_registry/connection.h"
#include "embedded_registry/names.h"
#include "embedded_registry/schema.h"

namespace korva::platform::embedded {

/// A key's number as the last one, after those of the keys above it from the top on. Keys never move, so it
/// holds until the key is deleted.
using KeyChain = std::vector<KeyId>;

/// Members throw `Failure`.
class KeySearch {
public:
    explicit KeySearch(Connection& connection);

    /// The number of the last change in the key or below it; nothing if the key is deleted.
    [[nodiscard]] std::optional<std::int64_t> sequence(KeyId key);
    /// The key of that name; nothing if there is none.
    [[nodiscard]] std::optional<KeyId> child(KeyId parent, std::string_view folded);
    /// Whether the key is to stand for another one.
    [[nodiscard]] bool isLink(KeyId key);

    /// Goes down from `chain`, as far as there are keys. How many parts of the path it went.
    std::size_t descend(KeyChain& chain, const Path& path);

private:
    Statement sequenceOf;
    Statement childOf;
    Statement linkIn;
};

}  // namespace korva::platform::embedded
