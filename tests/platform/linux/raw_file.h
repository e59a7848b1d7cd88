// The registry's file as SQLite sees it.
#pragma once

#include <gtest/gtest.h>
#include <sqlite3.h>

#include <string>

namespace korva::test {

/// A connection that knows nothing of what the file is.
class RawFile {
public:
    explicit RawFile(const std::string& path) {
        EXPECT_EQ(sqlite3_open(path.c_str(), &connection), SQLITE_OK);
        sqlite3_busy_timeout(connection, 5000);
    }
    ~RawFile() { sqlite3_close(connection); }
    RawFile(const RawFile&) = delete;
    RawFile& operator=(const RawFile&) = delete;

    void run(const std::string& sql) const { static_cast<void>(answer(sql)); }

    /// The columns that `sql` gives, in one text.
    [[nodiscard]] std::string answer(const std::string& sql) const {
        std::string text;
        EXPECT_EQ(sqlite3_exec(connection, sql.c_str(), &RawFile::add, &text, nullptr), SQLITE_OK)
            << sqlite3_errmsg(connection);
        return text;
    }

private:
    static int add(void* text, int count, char** columns, char**) {
        for (int i = 0; i < count; ++i) {
            *static_cast<std::string*>(text) += columns[i] == nullptr ? "" : columns[i];
        }
        return 0;
    }

    sqlite3* connection = nullptr;
};

/// "ok" if nothing is wrong with a registry's file.
inline std::string integrityOf(const std::string& path) {
    return RawFile(path).answer("PRAGMA integrity_check");
}

}  // namespace korva::test
