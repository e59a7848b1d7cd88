#include "embedded_registry/failure.h"

#include <cerrno>

namespace korva::platform::embedded {
namespace {

using namespace registry_result;

/// SQLite calls only a refused write a full disk; a limit of the file's size is the same to a user.
bool noRoom(int systemError) {
    return systemError == ENOSPC || systemError == EDQUOT || systemError == EFBIG;
}

bool notAllowed(int systemError) {
    return systemError == EACCES || systemError == EPERM || systemError == EROFS;
}

RegistryResult resultOfSystemError(int systemError) {
    return noRoom(systemError) ? diskFull : notAllowed(systemError) ? accessDenied : ioFailed;
}

}  // namespace

RegistryResult resultOf(sqlite3* connection, int code) noexcept {
    switch (code & 0xFF) {
        case SQLITE_OK:
        case SQLITE_ROW:
        case SQLITE_DONE:
            return success;
        case SQLITE_BUSY:
        case SQLITE_LOCKED:
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
            return code == SQLITE_IOERR_NOMEM ? outOfMemory
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
