// A connection to the registry's file.
#pragma once

#include <sqlite3.h>

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "embedded_registry/statement.h"

namespace korva::platform::embedded {

/// One thread at a time uses it. Members throw `Failure`.
class Connection {
public:
    enum class Kind {
        writable,   ///< For reading only where the system allows no more. Makes the file if it is missing.
        unchanging  ///< For reading a file that nobody writes: it needs no files beside it.
    };

    Connection(const std::string& path, Kind kind);
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    /// Waits at most 5 s for other processes, like everything that is run on this connection.
    void run(const char* sql);
    /// The same for what SQLite refuses at once, instead of waiting, while another connection is at it.
    /// [blocks]
    void runWhenFree(const char* sql);
    /// The first number that `sql` gives, 0 without any.
    [[nodiscard]] std::int64_t number(const char* sql);

    /// Whether the last connection of all leaves the file as it is when it is closed, or brings what stands
    /// in the journal into it.
    void leaveFileAtEnd(bool leave) noexcept;

    [[nodiscard]] Kind kind() const noexcept { return kindOf; }
    [[nodiscard]] sqlite3* get() const noexcept { return connection.get(); }
    [[nodiscard]] bool isReadOnly() const noexcept { return sqlite3_db_readonly(get(), "main") != 0; }

private:
    friend class Transaction;
    struct Close {
        void operator()(sqlite3* c) const noexcept { sqlite3_close(c); }
    };

    static int waitWhenBusy(void* self, int waits) noexcept;

    Kind kindOf;
    std::unique_ptr<sqlite3, Close> connection;
    std::chrono::steady_clock::time_point busySince;
    // These end before the connection.
    std::optional<Statement> beginReading;
    std::optional<Statement> beginWriting;
    std::optional<Statement> commit;
    std::optional<Statement> rollback;
};

/// A change that is all or nothing, or several looks at one state. What was done is undone unless it was
/// committed. Members throw `Failure`.
class Transaction {
public:
    enum class Kind { reading, writing };

    /// Waits until no other process writes if this one is to write.
    Transaction(Connection& connection, Kind kind);
    ~Transaction();
    Transaction(const Transaction&) = delete;
    Transaction& operator=(const Transaction&) = delete;

    void commit();

private:
    Connection& connection;
};

}  // namespace korva::platform::embedded
