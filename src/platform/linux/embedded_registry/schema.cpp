#include "embedded_registry/schema.h"

#include <string>

#include "embedded_registry/failure.h"
#include "embedded_registry/file_kind.h"

namespace korva::platform::embedded {
namespace {

// Names stand apart from keys: a change writes the sequence number of each key above it, and those rows fit
// hundreds to a page.
//
// `folded` is the name as it is compared, `name` as it was first written. `made` is the sequence number by
// which a value came, so their order is that of insertion. `data` comes last: the columns before it are read
// without it.
constexpr const char* tables = R"(
    CREATE TABLE keys(
        id INTEGER PRIMARY KEY AUTOINCREMENT, parent INTEGER NOT NULL, sequence INTEGER NOT NULL);
    CREATE TABLE names(
        parent INTEGER NOT NULL, folded TEXT NOT NULL, name TEXT NOT NULL, id INTEGER NOT NULL,
        PRIMARY KEY(parent, folded)) WITHOUT ROWID;
    CREATE INDEX names_in_order ON names(parent, id, name);
    CREATE TABLE vals(
        key INTEGER NOT NULL, folded TEXT NOT NULL, name TEXT NOT NULL, made INTEGER NOT NULL,
        type INTEGER NOT NULL, data BLOB NOT NULL,
        PRIMARY KEY(key, folded)) WITHOUT ROWID;
    INSERT INTO keys VALUES(1, 0, 0), (2, 1, 0), (3, 1, 0);
    INSERT INTO names VALUES(0, '', '', 1), (1, 'hkey_local_machine', 'HKEY_LOCAL_MACHINE', 2),
                            (1, 'hkey_current_user', 'HKEY_CURRENT_USER', 3);
)";

bool isEmpty(Connection& connection) {
    return connection.number("PRAGMA page_count") == 0;
}

/// The tables come together with the file's numbers: nobody meets the one without the other.
void makeTables(Connection& connection) {
    Transaction transaction(connection, Transaction::Kind::writing);
    // Another process may have been first.
    if (connection.number("SELECT count(*) FROM sqlite_schema") == 0) {
        connection.run(tables);
        connection.run(("PRAGMA application_id = " + std::to_string(applicationId)).c_str());
        connection.run(("PRAGMA user_version = " + std::to_string(formatVersion)).c_str());
    }
    transaction.commit();
}

}  // namespace

void prepareFile(Connection& connection) {
    if (isEmpty(connection)) {
        if (connection.isReadOnly()) {
            throw Failure{registry_result::accessDenied};
        }
        makeTables(connection);
    }
    const RegistryResult refusal =
        refusalOf(connection.number("PRAGMA application_id"), connection.number("PRAGMA user_version"));
    if (refusal != registry_result::success) {
        throw Failure{refusal};
    }
    if (!connection.isReadOnly()) {
        // Of several that make the file together, each asks for it.
        connection.runWhenFree("PRAGMA journal_mode = WAL");
    }
    // A killed process loses nothing. What a power failure may take is whole changes, the last ones: `flush`.
    connection.run("PRAGMA synchronous = NORMAL");
}

}  // namespace korva::platform::embedded
