// Prepared statements of SQLite.
#pragma once

#include <sqlite3.h>

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace korva::platform::embedded {

/// A statement that is prepared once and run many times, by one thread at a time. Ends before its connection.
class Statement {
public:
    Statement(sqlite3* connection, const char* sql);
    ~Statement() { sqlite3_finalize(statement); }
    Statement(const Statement&) = delete;
    Statement& operator=(const Statement&) = delete;

private:
    friend class Run;
    sqlite3_stmt* statement = nullptr;
};

/// One run of a statement. What is bound must outlive it, as texts and bytes are not copied. Its end lets go
/// of the file, unless a transaction holds on to it. Members throw `Failure`.
class Run {
public:
    explicit Run(Statement& of) noexcept : statement(of.statement) {}
    ~Run() { sqlite3_reset(statement); }
    Run(const Run&) = delete;
    Run& operator=(const Run&) = delete;

    /// Parameters are bound in their order.
    Run& bind(std::int64_t number);
    Run& bind(std::string_view text);
    Run& bind(std::span<const std::byte> bytes);

    /// Goes to the next row; false after the last.
    bool step();
    /// The same, where a failure doesn't matter.
    void tryStep() noexcept { sqlite3_step(statement); }
    /// For a statement without rows: how many it changed.
    int change();

    /// Of the row, by column from 0; bytes are valid until the next step.
    [[nodiscard]] bool isNull(int column) const;
    [[nodiscard]] std::int64_t number(int column) const;
    [[nodiscard]] std::string_view text(int column) const;
    [[nodiscard]] std::span<const std::byte> bytes(int column) const;

private:
    void require(int code) const;

    sqlite3_stmt* statement;
    int nextParameter = 1;
};

}  // namespace korva::platform::embedded
