#include "embedded_registry/changes.h"

namespace korva::platform::embedded {

using namespace registry_result;

Changes::Changes(Connection& of)
    : search(of),
      connection(of.get()),
      setSequence(connection, "UPDATE keys SET sequence = ? WHERE id = ?"),
      insertKey(connection, "INSERT INTO keys(parent, sequence) VALUES(?, 0)"),
      insertName(connection, "INSERT INTO names(parent, folded, name, id) VALUES(?, ?, ?, ?)"),
      childIds(connection, "SELECT id FROM names WHERE parent = ?"),
      deleteName(connection, "DELETE FROM names WHERE parent = ? AND folded = ?"),
      deleteNamesBelow(connection, "DELETE FROM names WHERE parent = ?"),
      deleteRow(connection, "DELETE FROM keys WHERE id = ?"),
      deleteValues(connection, "DELETE FROM vals WHERE key = ?"),
      deleteOneValue(connection, "DELETE FROM vals WHERE key = ? AND folded = ?"),
      upsertValue(connection,
                  "INSERT INTO vals(key, folded, name, made, type, data) VALUES(?1, ?2, ?3, ?4, ?5, ?6)"
                  " ON CONFLICT(key, folded) DO UPDATE SET type = ?5, data = ?6") {}

std::int64_t Changes::number(const KeyChain& key) {
    next = (next != 0 ? next : search.sequence(topKey).value_or(0)) + 1;
    for (auto id = key.rbegin(); id != key.rend(); ++id) {
        if (Run(setSequence).bind(next).bind(*id).change() == 0) {
            // The own key is the first; those above one that is there are there too.
            return 0;
        }
    }
    return next;
}

RegistryResult Changes::create(KeyChain& chain, const Path& path, bool& created) {
    if (!search.sequence(chain.back())) {
        return keyDeleted;
    }
    const std::size_t there = search.descend(chain, path);
    if (there == path.size()) {
        created = false;
        return search.isLink(chain.back()) ? isLink : success;
    }
    // The top and the root stand above what is counted.
    if (chain.size() - 2 + (path.size() - there) > deepestKey) {
        return invalidParameter;
    }
    for (std::size_t i = there; i < path.size(); ++i) {
        chain.push_back(addKey(chain.back(), path[i]));
    }
    created = true;
    return success;
}

KeyId Changes::addKey(KeyId parent, const Name& name) {
    Run(insertKey).bind(parent).change();
    const KeyId id = sqlite3_last_insert_rowid(connection);
    Run(insertName).bind(parent).bind(name.folded).bind(name.written).bind(id).change();
    return id;
}

std::vector<KeyId> Changes::childrenOf(KeyId key) {
    std::vector<KeyId> children;
    Run run(childIds);
    run.bind(key);
    while (run.step()) {
        children.push_back(run.number(0));
    }
    return children;
}

bool Changes::hasChildren(KeyId key) {
    return Run(childIds).bind(key).step();
}

/// Leads `chain` down to the key at `path`.
RegistryResult Changes::find(KeyChain& chain, const Path& path) {
    if (!search.sequence(chain.back())) {
        return keyDeleted;
    }
    return search.descend(chain, path) < path.size() ? notFound : success;
}

RegistryResult Changes::deleteKey(const KeyChain& from, const Path& path) {
    KeyChain chain = from;
    if (const RegistryResult result = find(chain, path); result != success) {
        return result;
    }
    const KeyId key = chain.back();
    if (hasChildren(key)) {
        return accessDenied;
    }
    chain.pop_back();
    return remove(chain, path.back(), key);
}

RegistryResult Changes::deleteTree(const KeyChain& from, const Path& path) {
    KeyChain chain = from;
    if (const RegistryResult result = find(chain, path); result != success) {
        return result;
    }
    const KeyId key = chain.back();
    chain.pop_back();
    removeBelow(key);
    return remove(chain, path.back(), key);
}

/// Also a key without values takes a sequence number with it: those that watch the key itself have to look.
RegistryResult Changes::remove(const KeyChain& parent, const Name& name, KeyId key) {
    removeRow(key);
    Run(deleteName).bind(parent.back()).bind(name.folded).change();
    return number(parent) == 0 ? keyDeleted : success;
}

void Changes::removeBelow(KeyId top) {
    std::vector<KeyId> left = childrenOf(top);
    Run(deleteNamesBelow).bind(top).change();
    while (!left.empty()) {
        const KeyId key = left.back();
        left.pop_back();
        const auto below = childrenOf(key);
        left.insert(left.end(), below.begin(), below.end());
        Run(deleteNamesBelow).bind(key).change();
        removeRow(key);
    }
}

void Changes::removeRow(KeyId key) {
    Run(deleteValues).bind(key).change();
    Run(deleteRow).bind(key).change();
}

RegistryResult Changes::setValue(const KeyChain& key, std::string_view name, std::string_view folded,
                                 std::uint32_t type, std::span<const std::byte> data) {
    const std::int64_t made = number(key);
    if (made == 0) {
        return keyDeleted;
    }
    Run run(upsertValue);
    run.bind(key.back()).bind(folded).bind(name).bind(made).bind(std::int64_t{type}).bind(data).change();
    return success;
}

RegistryResult Changes::deleteValue(const KeyChain& key, std::string_view folded) {
    if (Run(deleteOneValue).bind(key.back()).bind(folded).change() == 0) {
        return search.sequence(key.back()) ? notFound : keyDeleted;
    }
    return number(key) == 0 ? keyDeleted : success;
}

}  // namespace korva::platform::embedded
