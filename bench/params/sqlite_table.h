// The least that a value in an SQLite file can cost: what the registry is held against.
#pragma once

#include <sqlite3.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>

namespace korva::bench {

/// One table of values in a file of its own, with a journal that is written ahead, as the registry's is. It
/// has no tree of keys, no names without regard to case and no word of changes. Everything it runs is
/// prepared. One thread uses it. Members raise std::runtime_error.
class SqliteTable {
public:
    explicit SqliteTable(const std::string& path);

    /// Copies the data of a value to `data`, which has room for it, and gives its length.
    std::size_t get(std::int64_t key, std::string_view name, std::span<std::byte> data);

    /// Sets a value in a transaction of its own.
    void set(std::int64_t key, std::string_view name, std::uint32_t type, std::span<const std::byte> data);

private:
    struct Close {
        void operator()(sqlite3* connection) const noexcept { sqlite3_close(connection); }
        void operator()(sqlite3_stmt* statement) const noexcept { sqlite3_finalize(statement); }
    };
    using Statement = std::unique_ptr<sqlite3_stmt, Close>;

    Statement prepare(const char* sql);
    void require(int code) const;
    void run(const Statement& statement);
    void bind(const Statement& statement, std::int64_t key, std::string_view name);

    std::unique_ptr<sqlite3, Close> connection;  // ends after the statements
    Statement select;
    Statement upsert;
    Statement begin;
    Statement commit;
};

}  // namespace korva::bench
