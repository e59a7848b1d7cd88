#include "embedded_registry/database.h"

#include <sys/stat.h>
#include <unistd.h>

#include <mutex>
#include <utility>

#include "embedded_registry/failure.h"
#include "embedded_registry/file_kind.h"
#include "embedded_registry/place.h"

namespace korva::platform::embedded {
namespace {

std::unique_ptr<Connection> openFile(const std::string& path, Connection::Kind kind) {
    auto connection = std::make_unique<Connection>(path, kind);
    // A file that is refused stays as it is to the last byte.
    connection->leaveFileAtEnd(true);
    prepareFile(*connection);
    connection->leaveFileAtEnd(false);
    return connection;
}

bool hasJournal(const std::string& path) {
    struct stat found {};
    return stat((path + "-wal").c_str(), &found) == 0 && found.st_size > 0;
}

/// Where the folder allows no files beside it, the file can be read all the same: nobody has it open there
/// who could write to it.
std::unique_ptr<Connection> openAnyhow(const std::string& path) {
    if (const RegistryResult refusal = refusalOf(path); refusal != registry_result::success) {
        throw Failure{refusal};
    }
    try {
        return openFile(path, Connection::Kind::writable);
    } catch (const Failure& failure) {
        if (failure.result != registry_result::accessDenied || hasJournal(path)) {
            throw;
        }
    }
    return openFile(path, Connection::Kind::unchanging);
}

// The file that was asked for last. Threads may come as long as the process lives, so only the open file ends
// with the library or the program. One that they open later still is the system's to clean up.
constinit Mutex heldMutex;
constinit std::shared_ptr<Database>* held = nullptr;
constinit pid_t heldBy = 0;

struct CloseAtEnd {
    ~CloseAtEnd() {
        const std::lock_guard guard(heldMutex);
        const auto* const closing = std::exchange(held, nullptr);
        // A copy of the process has no part in the connections.
        if (heldBy == getpid()) {
            delete closing;
        }
    }
};
const CloseAtEnd closeAtEnd;

}  // namespace

std::shared_ptr<Database> Database::current() {
    const std::string path = registryPath();
    if (path.empty()) {
        throw Failure{registry_result::ioFailed};
    }
    const std::lock_guard guard(heldMutex);
    if (held == nullptr) {
        held = new std::shared_ptr<Database>();
        heldBy = getpid();
    }
    if (*held == nullptr || !(*held)->isAt(path)) {
        // Closed first unless keys keep it: the files beside a file that was replaced are the new one's too.
        held->reset();
        makeFoldersFor(path);
        *held = std::make_shared<Database>(path);
    }
    return *held;
}

Database::Database(const std::string& at)
    : path(at),
      file(withoutLinks(path)),
      writing(openAnyhow(file)),
      identity(identityOf(file)),
      reader(file, writing->kind()),
      bell(file + "-bell"),
      writer(*writing, bell),
      listener(reader, bell) {}

Database::Identity Database::identityOf(const std::string& path) noexcept {
    struct stat found {};
    return stat(path.c_str(), &found) == 0 ? Identity{found.st_dev, found.st_ino} : Identity{};
}

bool Database::isAt(const std::string& other) const noexcept {
    // A file that was deleted or replaced is another one.
    return other == path && identityOf(path) == identity;
}

RegistryResult Database::findRoot(RegistryRoot root, KeyChain& found) {
    found = chainOfRoot(root);
    const Path below = pathOfRoot(root);
    if (below.empty()) {
        return registry_result::success;
    }
    const KeyChain from = found;
    const RegistryResult result = reader.find(from, below, found);
    bool created = false;
    return result == registry_result::notFound ? writer.create(from, below, found, created) : result;
}

}  // namespace korva::platform::embedded
