#include "platform/named_mutex.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <thread>
#include <utility>

#include "embedded_registry/place.h"

// Who has the mutex has a lock for reading on its file, and may share it with others. Who clears the file
// away has a lock for writing meanwhile: only so may it be unlinked, and only where it still is the file of
// that path. Who asks takes no lock at all, and tells the two apart.
//
// The locks belong to the open file, not to the process: threads keep each other out, and to open and close
// the file once more drops nothing. A copy of the process (by fork) shares the open file, so the mutex of a
// process that is killed stays until its copies have ended or run another program as well. When the process
// itself lets go, it does so for all of them; a copy never does.
namespace korva::platform {
namespace {

/// How long one who makes a mutex puts up with others who clear its file away.
constexpr std::chrono::seconds patience(1);

/// An ordinary open file, closed at the end; or none.
class File {
public:
    File(const std::string& path, int access) noexcept
        // Neither does a link lead elsewhere, nor has a pipe in the file's place anybody wait.
        : number(open(path.c_str(), access | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY, 0644)) {
        struct stat found {};
        if (number >= 0 && (fstat(number, &found) != 0 || !S_ISREG(found.st_mode))) {
            close(std::exchange(number, -1));
            errno = ENOENT;
        }
    }
    ~File() {
        if (number >= 0) {
            close(number);
        }
    }
    File(const File&) = delete;
    File& operator=(const File&) = delete;

    explicit operator bool() const noexcept { return number >= 0; }

    /// Whether nobody has unlinked or replaced it.
    [[nodiscard]] bool isAt(const std::string& path) const noexcept {
        struct stat own {};
        struct stat other {};
        return fstat(number, &own) == 0 && lstat(path.c_str(), &other) == 0 && own.st_dev == other.st_dev &&
               own.st_ino == other.st_ino;
    }

    /// Changes the file's lock, at once or not at all.
    [[nodiscard]] bool lock(short kind) const noexcept {
        struct flock whole = wholeFile(kind);
        return fcntl(number, F_OFD_SETLK, &whole) == 0;
    }

    /// The kind of a lock of others that keeps this file from one for writing; F_UNLCK for none.
    [[nodiscard]] short foreignLock() const noexcept {
        struct flock whole = wholeFile(F_WRLCK);
        return fcntl(number, F_OFD_GETLK, &whole) == 0 ? whole.l_type : short{F_UNLCK};
    }

    /// A mask of the process may have kept it from others, who couldn't ask then.
    void letAllRead() const noexcept { static_cast<void>(fchmod(number, 0644)); }

private:
    [[nodiscard]] static struct flock wholeFile(short kind) noexcept {
        struct flock whole {};
        whole.l_type = kind;
        whole.l_whence = SEEK_SET;
        return whole;
    }

    int number;
};

/// Where the file of a mutex is; empty if there is no such mutex.
std::string pathOf(const std::string& name) {
    const std::string registry = embedded::registryPath();
    if (registry.empty() || !isMutexName(name)) {
        return {};
    }
    std::string fileName = name + ".lock";
    fileName[fileName.find('\\')] = '_';
    return embedded::withoutLinks(registry) + ".run/" + fileName;
}

/// Whether a file that can't be opened isn't there: others may be somebody's all the same.
bool isMissing(int error) noexcept {
    return error == ENOENT || error == ENOTDIR || error == ELOOP;
}

void removeUnlessHeld(const File& file, const std::string& path) noexcept {
    if (file.lock(F_WRLCK) && file.isAt(path)) {
        unlink(path.c_str());
    }
}

}  // namespace

struct NamedMutex::Held {
    explicit Held(const std::string& at) : path(at), file(path, O_RDWR | O_CREAT) {}
    ~Held() {
        if (process == getpid() && file.lock(F_UNLCK)) {
            removeUnlessHeld(file, path);
        }
    }
    Held(const Held&) = delete;
    Held& operator=(const Held&) = delete;

    /// None if the file can't be had.
    [[nodiscard]] static std::unique_ptr<const Held> make(const std::string& path) {
        embedded::makeFoldersFor(path);
        const auto end = std::chrono::steady_clock::now() + patience;
        do {
            auto held = std::make_unique<const Held>(path);
            const bool isLocked = held->file && held->file.lock(F_RDLCK);
            if (!isLocked && (!held->file || errno != EAGAIN)) {
                return nullptr;
            }
            if (isLocked && held->file.isAt(path)) {
                held->file.letAllRead();
                return held;
            }
            // Somebody cleared the file away between the two, or is about to.
            std::this_thread::yield();
        } while (std::chrono::steady_clock::now() < end);
        return nullptr;
    }

    const std::string path;
    const File file;
    const pid_t process = getpid();
};

NamedMutex::NamedMutex() noexcept = default;
NamedMutex::NamedMutex(std::unique_ptr<const Held> mutex) noexcept : held(std::move(mutex)) {}
NamedMutex::NamedMutex(NamedMutex&& other) noexcept = default;
NamedMutex& NamedMutex::operator=(NamedMutex&& other) noexcept = default;
NamedMutex::~NamedMutex() = default;

NamedMutex NamedMutex::create(const std::string& name) noexcept {
    try {
        const std::string path = pathOf(name);
        return path.empty() ? NamedMutex() : NamedMutex(Held::make(path));
    } catch (...) {
        return {};  // no memory
    }
}

bool isMutexHeld(const std::string& name) noexcept {
    try {
        const std::string path = pathOf(name);
        const File file(path, O_RDONLY);
        return file ? file.foreignLock() == F_RDLCK : !isMissing(errno);
    } catch (...) {
        return true;  // no memory
    }
}

void removeAbandonedMutex(const std::string& name) noexcept {
    try {
        const std::string path = pathOf(name);
        if (const File file(path, O_RDWR); file) {
            removeUnlessHeld(file, path);
        }
    } catch (...) {
        // No memory: it stays for the next one.
    }
}

}  // namespace korva::platform
