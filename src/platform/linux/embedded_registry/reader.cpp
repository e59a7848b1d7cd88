#include "embedded_registry/reader.h"

#include <mutex>
#include <utility>

#include "embedded_registry/failure.h"

namespace korva::platform::embedded {

using namespace registry_result;

namespace {

/// Whoever asks for a name may rely on its form, also where the file is damaged.
std::string nameIn(const Run& row, int column) {
    const std::string_view name = row.text(column);
    if (!foldedName(name, longestValueName)) {
        throw Failure{corrupt};
    }
    return std::string(name);
}

}  // namespace

// The key's own row comes with each answer, and none at all tells that it is deleted.
Reader::Reader(const std::string& path, Connection::Kind kind)
    : connection(path, kind),
      search(connection),
      valueOf(
          connection.get(),
          "SELECT vals.type, vals.data FROM keys LEFT JOIN vals ON vals.key = keys.id AND vals.folded = ?2"
          " WHERE keys.id = ?1"),
      valueNamesOf(connection.get(),
                   "SELECT keys.sequence, vals.name FROM keys LEFT JOIN vals ON vals.key = keys.id"
                   " WHERE keys.id = ? ORDER BY vals.made"),
      keyNameOf(connection.get(),
                "SELECT names.name FROM keys LEFT JOIN names ON names.id ="
                " (SELECT id FROM names WHERE parent = ?1 ORDER BY id LIMIT 1 OFFSET ?2)"
                " AND names.parent = keys.id WHERE keys.id = ?1") {}

RegistryResult Reader::find(const KeyChain& from, const Path& path, KeyChain& found) {
    const std::lock_guard guard(mutex);
    Transaction state(connection, Transaction::Kind::reading);
    if (!search.sequence(from.back())) {
        return keyDeleted;
    }
    KeyChain chain = from;
    if (search.descend(chain, path) < path.size()) {
        return notFound;
    }
    if (search.isLink(chain.back())) {
        return isLink;
    }
    found = std::move(chain);
    return success;
}

RegistryResult Reader::readValue(KeyId key, std::string_view folded, RegistryValue& value) {
    const std::lock_guard guard(mutex);
    Run run(valueOf);
    if (!run.bind(key).bind(folded).step()) {
        return keyDeleted;
    }
    if (run.isNull(0)) {
        return notFound;
    }
    const auto bytes = run.bytes(1);
    value.data.assign(bytes.begin(), bytes.end());
    value.type = static_cast<std::uint32_t>(run.number(0));
    return success;
}

RegistryResult Reader::refresh(KeyId key, ValueNames& names) {
    const std::lock_guard guard(mutex);
    const auto current = search.sequence(key);
    if (!current) {
        return keyDeleted;
    }
    if (names.sequence == *current) {
        return success;
    }
    ValueNames read;
    Run run(valueNamesOf);
    run.bind(key);
    while (run.step()) {
        read.sequence = run.number(0);
        if (!run.isNull(1)) {
            read.names.push_back(nameIn(run, 1));
        }
    }
    if (read.sequence < 0) {
        return keyDeleted;
    }
    names = std::move(read);
    return success;
}

RegistryResult Reader::keyName(KeyId key, std::uint32_t index, std::string& name) {
    const std::lock_guard guard(mutex);
    Run run(keyNameOf);
    if (!run.bind(key).bind(std::int64_t{index}).step()) {
        return keyDeleted;
    }
    if (run.isNull(0)) {
        return noMoreItems;
    }
    name = nameIn(run, 0);
    return success;
}

std::optional<std::int64_t> Reader::sequence(KeyId key) {
    const std::lock_guard guard(mutex);
    return search.sequence(key);
}

}  // namespace korva::platform::embedded
