// What is written to the registry's file.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

#include "embedded_registry/bell.h"
#include "embedded_registry/changes.h"
#include "platform/mutex.h"

namespace korva::platform::embedded {

/// Each member is one change of the file: all of it, or nothing if the result isn't 0. It waits for other
/// writers of this process, and at most 5 s for those of others. Members throw `Failure`.  [any, blocks]
class Writer {
public:
    /// Only this uses the connection. The bell is rung after each change that has a sequence number, once
    /// others can see it.
    Writer(Connection& own, Bell& shared) : connection(own), bell(shared), changes(own) {}

    /// `found` is the key, which was made if `created` is true then.
    [[nodiscard]] RegistryResult create(const KeyChain& from, const Path& path, KeyChain& found,
                                        bool& created);
    /// The path isn't empty.
    [[nodiscard]] RegistryResult deleteKey(const KeyChain& from, const Path& path);
    [[nodiscard]] RegistryResult deleteTree(const KeyChain& from, const Path& path);
    [[nodiscard]] RegistryResult setValue(const KeyChain& key, std::string_view name, std::string_view folded,
                                          std::uint32_t type, std::span<const std::byte> data);
    [[nodiscard]] RegistryResult deleteValue(const KeyChain& key, std::string_view folded);
    [[nodiscard]] RegistryResult apply(std::span<const RegistryChange> changes, bool (*isCancelled)(),
                                       std::size_t& failedIndex);

    /// Brings what was written to the disk, if the key isn't deleted.
    [[nodiscard]] RegistryResult flush(KeyId key);

private:
    template <class Change>
    RegistryResult transact(const Change& change);
    template <class Change>
    RegistryResult commit(const Change& change, bool& isNumbered);
    RegistryResult applyOne(const RegistryChange& change);

    Mutex mutex;
    Connection& connection;
    Bell& bell;
    Changes changes;
};

/// The keys from the top to a root; "Software\Classes" is another part of the way to `classesRoot`.
[[nodiscard]] KeyChain chainOfRoot(RegistryRoot root);
[[nodiscard]] Path pathOfRoot(RegistryRoot root);

}  // namespace korva::platform::embedded
