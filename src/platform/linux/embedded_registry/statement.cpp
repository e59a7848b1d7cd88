#include "embedded_registry/statement.h"

#include "embedded_registry/failure.h"

namespace korva::platform::embedded {

Statement::Statement(sqlite3* connection, const char* sql) {
    embedded::require(
        connection, sqlite3_prepare_v3(connection, sql, -1, SQLITE_PREPARE_PERSISTENT, &statement, nullptr));
}

void Run::require(int code) const {
    embedded::require(sqlite3_db_handle(statement), code);
}

Run& Run::bind(std::int64_t number) {
    require(sqlite3_bind_int64(statement, nextParameter++, number));
    return *this;
}

Run& Run::bind(std::string_view text) {
    // A null pointer would be bound as no text at all.
    const char* const begin = text.empty() ? "" : text.data();
    require(sqlite3_bind_text64(statement, nextParameter++, begin, text.size(), SQLITE_STATIC, SQLITE_UTF8));
    return *this;
}

Run& Run::bind(std::span<const std::byte> bytes) {
    const void* const begin = bytes.empty() ? static_cast<const void*>("") : bytes.data();
    require(sqlite3_bind_blob64(statement, nextParameter++, begin, bytes.size(), SQLITE_STATIC));
    return *this;
}

bool Run::step() {
    const int code = sqlite3_step(statement);
    if (code != SQLITE_ROW && code != SQLITE_DONE) {
        require(code);
    }
    return code == SQLITE_ROW;
}

int Run::change() {
    while (step()) {
    }
    return sqlite3_changes(sqlite3_db_handle(statement));
}

bool Run::isNull(int column) const {
    return sqlite3_column_type(statement, column) == SQLITE_NULL;
}

std::int64_t Run::number(int column) const {
    return sqlite3_column_int64(statement, column);
}

std::string_view Run::text(int column) const {
    const auto* begin = reinterpret_cast<const char*>(sqlite3_column_text(statement, column));
    const int size = sqlite3_column_bytes(statement, column);
    if (begin == nullptr) {
        require(SQLITE_NOMEM);
    }
    return {begin, static_cast<std::size_t>(size)};
}

std::span<const std::byte> Run::bytes(int column) const {
    const auto* begin = static_cast<const std::byte*>(sqlite3_column_blob(statement, column));
    return {begin, static_cast<std::size_t>(sqlite3_column_bytes(statement, column))};
}

}  // namespace korva::platform::embedded
