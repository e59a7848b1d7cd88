#include "bench/params/sqlite_table.h"

#include <cstring>
#include <stdexcept>

namespace korva::bench {

SqliteTable::SqliteTable(const std::string& path) {
    constexpr int flags = SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_NOMUTEX;
    sqlite3* opened = nullptr;
    const int code = sqlite3_open_v2(path.c_str(), &opened, flags, nullptr);
    connection.reset(opened);
    require(code);
    require(sqlite3_exec(opened,
                         "PRAGMA journal_mode = WAL; PRAGMA synchronous = NORMAL;"
                         "CREATE TABLE vals(key INTEGER NOT NULL, name TEXT NOT NULL, type INTEGER NOT NULL,"
                         " data BLOB NOT NULL, PRIMARY KEY(key, name)) WITHOUT ROWID",
                         nullptr, nullptr, nullptr));
    select = prepare("SELECT type, data FROM vals WHERE key = ? AND name = ?");
    upsert = prepare(
        "INSERT INTO vals(key, name, type, data) VALUES(?1, ?2, ?3, ?4)"
        " ON CONFLICT(key, name) DO UPDATE SET type = ?3, data = ?4");
    begin = prepare("BEGIN IMMEDIATE");
    commit = prepare("COMMIT");
}

std::size_t SqliteTable::get(std::int64_t key, std::string_view name, std::span<std::byte> data) {
    bind(select, key, name);
    if (sqlite3_step(select.get()) != SQLITE_ROW) {
        throw std::runtime_error("SQLite has no such value");
    }
    const void* const begins = sqlite3_column_blob(select.get(), 1);
    const auto size = static_cast<std::size_t>(sqlite3_column_bytes(select.get(), 1));
    if (size > data.size()) {
        throw std::runtime_error("no room for the value");
    }
    std::memcpy(data.data(), begins, size);
    sqlite3_reset(select.get());
    return size;
}

void SqliteTable::set(std::int64_t key, std::string_view name, std::uint32_t type,
                      std::span<const std::byte> data) {
    run(begin);
    bind(upsert, key, name);
    require(sqlite3_bind_int64(upsert.get(), 3, type));
    require(sqlite3_bind_blob64(upsert.get(), 4, data.data(), data.size(), SQLITE_STATIC));
    run(upsert);
    run(commit);
}

SqliteTable::Statement SqliteTable::prepare(const char* sql) {
    sqlite3_stmt* prepared = nullptr;
    require(sqlite3_prepare_v3(connection.get(), sql, -1, SQLITE_PREPARE_PERSISTENT, &prepared, nullptr));
    return Statement(prepared);
}

void SqliteTable::require(int code) const {
    if (code != SQLITE_OK) {
        throw std::runtime_error(sqlite3_errmsg(connection.get()));
    }
}

void SqliteTable::run(const Statement& statement) {
    if (sqlite3_step(statement.get()) != SQLITE_DONE) {
        throw std::runtime_error(sqlite3_errmsg(connection.get()));
    }
    require(sqlite3_reset(statement.get()));
}

void SqliteTable::bind(const Statement& statement, std::int64_t key, std::string_view name) {
    require(sqlite3_bind_int64(statement.get(), 1, key));
    require(sqlite3_bind_text64(statement.get(), 2, name.data(), name.size(), SQLITE_STATIC, SQLITE_UTF8));
}

}  // namespace korva::bench
