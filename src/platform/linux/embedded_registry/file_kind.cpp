#include "embedded_registry/file_kind.h"

#include <sqlite3.h>
#include <sys/stat.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <cstddef>
#include <memory>
#include <string_view>
#include <thread>
#include <vector>

#include "embedded_registry/failure.h"

namespace korva::platform::embedded {
namespace {

constexpr std::string_view magic{"SQLite format 3\0", 16};
constexpr std::size_t versionOffset = 60;
constexpr std::size_t applicationOffset = 68;
constexpr int headerSize = 100;
using Header = std::array<unsigned char, headerSize>;

std::int32_t numberAt(const Header& header, std::size_t offset) {
    std::uint32_t number = 0;
    for (std::size_t i = 0; i < 4; ++i) {
        number = number << 8 | header[offset + i];
    }
    return static_cast<std::int32_t>(number);
}

/// A file as SQLite opens it: to close it in another way would drop the locks of this process's connections.
class PlainFile {
public:
    explicit PlainFile(const std::string& path)
        : name(sqlite3_create_filename(path.c_str(), "", "", 0, nullptr)) {
        sqlite3_vfs* const system = sqlite3_vfs_find(nullptr);
        if (name == nullptr || system == nullptr) {
            throw Failure{registry_result::outOfMemory};
        }
        storage.resize(static_cast<std::size_t>(system->szOsFile) / sizeof(std::max_align_t) + 1);
        int flags = 0;
        openCode = system->xOpen(system, name, file(), SQLITE_OPEN_MAIN_DB | SQLITE_OPEN_READONLY, &flags);
        openError = errno;
    }
    ~PlainFile() {
        if (file()->pMethods != nullptr) {
            file()->pMethods->xClose(file());
        }
        sqlite3_free_filename(name);
    }
    PlainFile(const PlainFile&) = delete;
    PlainFile& operator=(const PlainFile&) = delete;

    /// What is there of the header, the rest zero. Waits for one who is just making the file. Throws
    /// `Failure` for a file that can't be opened.
    [[nodiscard]] int read(Header& header) {
        if (openCode != SQLITE_OK) {
            throw Failure{resultOfSystemError(openError)};
        }
        const int locked = lock();
        if (locked != SQLITE_OK) {
            return locked;
        }
        const int code = file()->pMethods->xRead(file(), header.data(), headerSize, 0);
        file()->pMethods->xUnlock(file(), SQLITE_LOCK_NONE);
        return code;
    }

private:
    sqlite3_file* file() { return reinterpret_cast<sqlite3_file*>(storage.data()); }

    int lock() {
        const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(5);
        for (;;) {
            const int code = file()->pMethods->xLock(file(), SQLITE_LOCK_SHARED);
            if (code != SQLITE_BUSY || std::chrono::steady_clock::now() > end) {
                return code;
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
    }

    sqlite3_filename name;
    std::vector<std::max_align_t> storage;
    int openCode = SQLITE_OK;
    int openError = 0;  ///< The system's, if the code is a failure.
};

bool isEmpty(const std::string& path) {
    struct stat found {};
    if (stat(path.c_str(), &found) != 0) {
        if (errno != ENOENT) {
            throw Failure{resultOfSystemError(errno)};
        }
        return true;
    }
    // A device may look like an empty file, and would get a journal beside it.
    if (!S_ISREG(found.st_mode)) {
        throw Failure{registry_result::ioFailed};
    }
    return found.st_size == 0;
}

}  // namespace

RegistryResult refusalOf(std::int64_t application, std::int64_t version) noexcept {
    if (application != applicationId || version < 1) {
        return registry_result::notRegistryFile;
    }
    return version > formatVersion ? registry_result::newerFile : registry_result::success;
}

RegistryResult refusalOf(const std::string& path) {
    if (isEmpty(path)) {
        return registry_result::success;
    }
    PlainFile file(path);
    Header header{};
    const int code = file.read(header);
    if (code == SQLITE_BUSY) {
        return registry_result::busy;
    }
    if (code != SQLITE_OK && code != SQLITE_IOERR_SHORT_READ) {
        return registry_result::ioFailed;
    }
    if (std::string_view(reinterpret_cast<const char*>(header.data()), magic.size()) != magic) {
        // One who made the file may have been ended before it had anything: SQLite puts that right.
        return header == Header{} && isEmpty(path) ? registry_result::success
                                                   : registry_result::notRegistryFile;
    }
    return refusalOf(numberAt(header, applicationOffset), numberAt(header, versionOffset));
}

}  // namespace korva::platform::embedded
