#include "embedded_registry/connection.h"

#include <algorithm>
#include <thread>

#include "embedded_registry/failure.h"

namespace korva::platform::embedded {
namespace {

constexpr std::chrono::seconds patience(5);

/// A path as SQLite takes it in a name with options: without a meaning of its signs.
std::string escaped(const std::string& path) {
    std::string text;
    for (const char c : path) {
        if (c == '%' || c == '?' || c == '#') {
            constexpr const char* digits = "0123456789ABCDEF";
            text += {'%', digits[c / 16], digits[c % 16]};
        } else {
            text += c;
        }
    }
    return text;
}

}  // namespace

Connection::Connection(const std::string& path, Kind kind) : kindOf(kind) {
    // Each connection has a lock of ours around it, so SQLite needs none.
    constexpr int always = SQLITE_OPEN_NOMUTEX | SQLITE_OPEN_EXRESCODE;
    const bool isWritable = kind == Kind::writable;
    const std::string name = isWritable ? path : "file:" + escaped(path) + "?immutable=1";
    const int access =
        isWritable ? SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE : SQLITE_OPEN_READONLY | SQLITE_OPEN_URI;
    sqlite3* opened = nullptr;
    const int code = sqlite3_open_v2(name.c_str(), &opened, always | access, nullptr);
    connection.reset(opened);
    require(opened, code);
    sqlite3_busy_handler(opened, &waitWhenBusy, this);
    beginReading.emplace(opened, "BEGIN");
    beginWriting.emplace(opened, "BEGIN IMMEDIATE");
    commit.emplace(opened, "COMMIT");
    rollback.emplace(opened, "ROLLBACK");
}

/// Others keep the file for tens of microseconds, so the first waits are short.
int Connection::waitWhenBusy(void* self, int waits) noexcept {
    auto& connection = *static_cast<Connection*>(self);
    const auto now = std::chrono::steady_clock::now();
    if (waits == 0) {
        connection.busySince = now;
    }
    if (now - connection.busySince >= patience) {
        return 0;
    }
    std::this_thread::sleep_for(std::chrono::microseconds(50) * (1 << std::min(waits, 6)));
    return 1;
}

void Connection::leaveFileAtEnd(bool leave) noexcept {
    sqlite3_db_config(get(), SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, leave ? 1 : 0, nullptr);
}

void Connection::run(const char* sql) {
    require(get(), sqlite3_exec(get(), sql, nullptr, nullptr, nullptr));
}

void Connection::runWhenFree(const char* sql) {
    const auto end = std::chrono::steady_clock::now() + patience;
    for (;;) {
        const int code = sqlite3_exec(get(), sql, nullptr, nullptr, nullptr);
        if ((code & 0xFF) != SQLITE_BUSY || std::chrono::steady_clock::now() >= end) {
            require(get(), code);
            return;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
}

std::int64_t Connection::number(const char* sql) {
    Statement statement(get(), sql);
    Run run(statement);
    return run.step() ? run.number(0) : 0;
}

Transaction::Transaction(Connection& of, Kind kind) : connection(of) {
    Run(kind == Kind::reading ? *of.beginReading : *of.beginWriting).step();
}

Transaction::~Transaction() {
    // Some failures have undone it already.
    if (sqlite3_get_autocommit(connection.get()) == 0) {
        Run(*connection.rollback).tryStep();
    }
}

void Transaction::commit() {
    Run(*connection.commit).step();
}

}  // namespace korva::platform::embedded
