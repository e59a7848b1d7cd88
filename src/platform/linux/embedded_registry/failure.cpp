#include "embedded_registry/failure.h"

#include <cerrno>

namespace korva::platform::embedded {
namespace {

using namespace registry_result;

/// SQLite calls only the first of them a full disk; to a user, the limits of a user and of a file are the
/// same.
bool noRoom(int systemError) {
    return systemError == ENOSPC || systemError == EDQUOT || systemError == EFBIG;
}

bool notAllowed(int systemError) {
    return systemError == EACCES || systemError == EPERM || systemError == EROFS;
}

/// Whether the last write that failed had no room. The system's error that the connection itself keeps is of
/// the last call of all, which was to clean up.
bool hadNoRoom(sqlite3* connection) {
    for (const int which : {SQLITE_FCNTL_JOURNAL_POINTER, SQLITE_FCNTL_FILE_POINTER}) {
        sqlite3_file* file = nullptr;
        int error = 0;
        sqlite3_file_control(connection, "main", which, &file);
        if (file != nullptr && file->pMethods != nullptr) {
            file->pMethods->xFileControl(file, SQLITE_FCNTL_LAST_ERRNO, &error);
        }
        if (noRoom(error)) {
            return true;
        }
    }
    return false;
}

}  // namespace

RegistryResult resultOfSystemError(int systemError) noexcept {
    return noRoom(systemError) ? diskFull : notAllowed(systemError) ? accessDenied : ioFailed;
}

RegistryResult resultOf(sqlite3* connection, int code) noexcept {
    switch (code & 0xFF) {
        case SQLITE_OK:
        case SQLITE_ROW:
        case SQLITE_DONE:
            return success;
        case SQLITE_BUSY:
        case SQLITE_LOCKED:
        // The last one: many came and went at once, and the index of the journal never stood still.
        case SQLITE_PROTOCOL:
            return busy;
        case SQLITE_READONLY:
        case SQLITE_PERM:
        case SQLITE_AUTH:
            return accessDenied;
        case SQLITE_FULL:
            return diskFull;
        case SQLITE_NOMEM:
        case SQLITE_TOOBIG:
            return outOfMemory;
        case SQLITE_IOERR:
            if (code == SQLITE_IOERR_NOMEM) {
                return outOfMemory;
            }
            return code == SQLITE_IOERR_WRITE && hadNoRoom(connection)
                       ? diskFull
                       : resultOfSystemError(sqlite3_system_errno(connection));
        case SQLITE_CANTOPEN:
            return resultOfSystemError(sqlite3_system_errno(connection));
        // Also what a table that is missing gives: whether the file is a registry at all was looked at
        // before.
        default:
            return corrupt;
    }
}

void require(sqlite3* connection, int code) {
    if (code != SQLITE_OK) {
        throw Failure{resultOf(connection, code)};
    }
}

}  // namespace korva::platform::embedded
