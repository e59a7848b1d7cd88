#include "platform/registry_health.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <new>

#include "embedded_registry/connection.h"
#include "embedded_registry/failure.h"
#include "embedded_registry/file_kind.h"
#include "embedded_registry/place.h"

namespace korva::platform {
namespace {

using embedded::Connection;
using embedded::Failure;

bool isMissing(const std::string& path) {
    struct stat found {};
    return stat(path.c_str(), &found) != 0 && (errno == ENOENT || errno == ENOTDIR);
}

bool allows(const std::string& path, int use) {
    return faccessat(AT_FDCWD, path.c_str(), use, AT_EACCESS) == 0;
}

/// Of a full disk some bytes are kept for the administrator, who is told of those.
std::uint64_t freeBytesAt(const std::string& folder) {
    struct statvfs found {};
    if (statvfs(folder.c_str(), &found) != 0) {
        return std::numeric_limits<std::uint64_t>::max();
    }
    const auto blocks = geteuid() == 0 ? found.f_bfree : found.f_bavail;
    return static_cast<std::uint64_t>(blocks) * found.f_frsize;
}

std::string damageSeenBy(Connection& connection) {
    embedded::Statement check(connection.get(), "PRAGMA quick_check(1)");
    embedded::Run run(check);
    if (!run.step() || run.text(0) == "ok") {
        return {};
    }
    return std::string(run.text(0));
}

std::string damageOf(const std::string& path, Connection::Kind kind) {
    Connection connection(path, kind);
    // Who only looks leaves what stands in the journal there.
    connection.leaveFileAtEnd(true);
    try {
        return damageSeenBy(connection);
    } catch (const Failure& failure) {
        if (failure.result != registry_result::corrupt) {
            throw;
        }
        return sqlite3_errmsg(connection.get());
    }
}

void examineFile(const std::string& path, RegistryHealth& health) {
    const std::string folder = std::filesystem::path(path).parent_path().native();
    health.isWritable = allows(path, W_OK);
    health.isFolderWritable = allows(folder, W_OK | X_OK);
    health.freeBytes = freeBytesAt(folder);
    try {
        health.damage = damageOf(path, Connection::Kind::writable);
    } catch (const Failure& failure) {
        if (failure.result != registry_result::accessDenied) {
            throw;
        }
        // Where no files can be made beside it, it is read without its journal.
        health.damage = damageOf(path, Connection::Kind::unchanging);
    }
}

}  // namespace

RegistryHealth examineRegistry() {
    RegistryHealth health;
    const std::string path = embedded::registryPath();
    if (path.empty()) {
        health.result = registry_result::ioFailed;
        return health;
    }
    health.isThere = !isMissing(path);
    if (!health.isThere) {
        return health;
    }
    try {
        const std::string file = embedded::withoutLinks(path);
        health.result = embedded::refusalOf(file);
        if (health.result == registry_result::success) {
            examineFile(file, health);
        }
    } catch (const Failure& failure) {
        health.result = failure.result;
    } catch (const std::bad_alloc&) {
        health.result = registry_result::outOfMemory;
    }
    return health;
}

}  // namespace korva::platform
