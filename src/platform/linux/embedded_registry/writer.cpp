#include "embedded_registry/writer.h"

#include <mutex>

#include "embedded_registry/failure.h"

namespace korva::platform::embedded {

using namespace registry_result;

KeyChain chainOfRoot(RegistryRoot root) {
    return {topKey, root == RegistryRoot::currentUser ? currentUserKey : localMachineKey};
}

Path pathOfRoot(RegistryRoot root) {
    return root == RegistryRoot::classesRoot ? Path{{"Software", "software"}, {"Classes", "classes"}}
                                             : Path{};
}

template <class Change>
RegistryResult Writer::commit(const Change& change, bool& isNumbered) {
    const std::lock_guard guard(mutex);
    Transaction transaction(connection, Transaction::Kind::writing);
    changes.begin();
    const RegistryResult result = change();
    if (result == success) {
        transaction.commit();
        isNumbered = changes.haveNumber();
    }
    return result;
}

template <class Change>
RegistryResult Writer::transact(const Change& change) {
    bool isNumbered = false;
    const RegistryResult result = commit(change, isNumbered);
    if (isNumbered) {
        bell.ring();
    }
    return result;
}

RegistryResult Writer::create(const KeyChain& from, const Path& path, KeyChain& found, bool& created) {
    return transact([&] {
        found = from;
        return changes.create(found, path, created);
    });
}

RegistryResult Writer::deleteKey(const KeyChain& from, const Path& path) {
    return transact([&] { return changes.deleteKey(from, path); });
}

RegistryResult Writer::deleteTree(const KeyChain& from, const Path& path) {
    return transact([&] { return changes.deleteTree(from, path); });
}

RegistryResult Writer::setValue(const KeyChain& key, std::string_view name, std::string_view folded,
                                std::uint32_t type, std::span<const std::byte> data) {
    return transact([&] { return changes.setValue(key, name, folded, type, data); });
}

RegistryResult Writer::deleteValue(const KeyChain& key, std::string_view folded) {
    return transact([&] { return changes.deleteValue(key, folded); });
}

RegistryResult Writer::apply(std::span<const RegistryChange> all, bool (*isCancelled)(),
                             std::size_t& failedIndex) {
    return transact([&] {
        for (failedIndex = 0; failedIndex < all.size(); ++failedIndex) {
            if (isCancelled != nullptr && isCancelled()) {
                return cancelled;
            }
            if (const RegistryResult result = applyOne(all[failedIndex]); result != success) {
                return result;
            }
        }
        return success;
    });
}

RegistryResult Writer::applyOne(const RegistryChange& change) {
    using Kind = RegistryChange::Kind;
    const auto path = splitPath(change.path);
    const auto folded = foldedName(change.name, longestValueName);
    const bool isWhole = path && (change.kind != Kind::deleteTree || !path->empty());
    if (!isWhole || !folded) {
        return invalidParameter;
    }
    KeyChain chain = chainOfRoot(change.root);
    Path full = pathOfRoot(change.root);
    full.insert(full.end(), path->begin(), path->end());
    if (change.kind == Kind::deleteTree) {
        const RegistryResult result = changes.deleteTree(chain, full);
        return result == notFound ? success : result;
    }
    if (change.kind == Kind::deleteValue) {
        if (changes.search.descend(chain, full) < full.size()) {
            return success;
        }
        if (changes.search.isLink(chain.back())) {
            return isLink;
        }
        const RegistryResult result = changes.deleteValue(chain, *folded);
        return result == notFound ? success : result;
    }
    bool created = false;
    const RegistryResult result = changes.create(chain, full, created);
    if (result != success || change.kind == Kind::createKey) {
        return result;
    }
    return changes.setValue(chain, change.name, *folded, change.value.type, change.value.data);
}

RegistryResult Writer::flush(KeyId key) {
    const std::lock_guard guard(mutex);
    if (!changes.search.sequence(key)) {
        return keyDeleted;
    }
    sqlite3_file* journal = nullptr;
    sqlite3_file_control(connection.get(), "main", SQLITE_FCNTL_JOURNAL_POINTER, &journal);
    // Whole changes are in the journal until they are in the file, where they are synchronised first.
    if (journal != nullptr && journal->pMethods != nullptr && !connection.isReadOnly()) {
        require(connection.get(), journal->pMethods->xSync(journal, SQLITE_SYNC_NORMAL));
    }
    return success;
}

}  // namespace korva::platform::embedded
